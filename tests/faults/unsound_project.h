#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

/// What is wrong with the points of a project.
enum class PointFlaw {
    none,
    offTheCurve,
    orderTwo,     ///< (0, square root of b)
    orderTwiceN,  ///< a point of order n and the one of order two, together
    orderThree,   ///< on a curve with another b, which the group law does not read
    xOfZero,
    origin,      ///< (0, 0)
    cycleOfOne,  ///< (1, 0) or (1, 1), each the double of the other by the formulas
    simple,      ///< few terms, or all
    bitsAboveTheDegree,
    congruentCycle,  ///< of `cycleOfOne`, with a multiple of the polynomial added to x
    multiples,       ///< of the polynomial, or sums of one with something small
};
inline constexpr std::array<PointFlaw, 12> pointFlaws = {
    PointFlaw::none,           PointFlaw::offTheCurve,
    PointFlaw::orderTwo,       PointFlaw::orderTwiceN,
    PointFlaw::orderThree,     PointFlaw::xOfZero,
    PointFlaw::origin,         PointFlaw::cycleOfOne,
    PointFlaw::simple,         PointFlaw::bitsAboveTheDegree,
    PointFlaw::congruentCycle, PointFlaw::multiples};

/// The attributes of a project of which base point, public point, scalar and the way of writing are
/// wrong in some ways. Signing `data` is made to fail again and again where that can be arranged.
AttributeValues unsoundProject(const ProjectKey& sound, std::string_view data);

/// A project under which every attempt at signing `data` fails, and slowly: x is 1 and y a multiple
/// of the polynomial, by z^shift, so that coordinates are never reduced and x is always the same.
AttributeValues projectOfRetries(std::uint64_t shift, std::string_view data);

/// Shifts that `projectOfRetries` takes: all below this.
inline constexpr std::uint64_t slowCycles = 13;

/// Texts to verify under any project: random numbers, and those at the borders of what is read.
std::string oddSignature();
