#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/core_integer.h"
#include "curve/field_element.h"

namespace core {

// Arithmetic of GF(2^m). The degree comes from the operands, W is its number of 64-bit words. No
// operation checks degrees, capacities or overlap. A result given as 1 reports nothing.
//
// A reduction polynomial of a degree that is a multiple of 64 has its highest term outside of the W
// words: such fields are multiplied and reduced rightly, and not divided.

/// W for an element of this degree.
inline std::size_t fieldWords(std::uint64_t degree) {
    return static_cast<std::size_t>((degree + 63) / 64);
}

/// A new zero element, to be given back with `fieldRelease`. Its capacity is
/// ((degree / 8 + 95) rounded down to a multiple of 64) - 16 bytes: 48 for degree 163.
FieldElement* fieldNew(std::uint64_t degree);

void fieldRelease(FieldElement* e);

struct FieldReleaser {
    void operator()(FieldElement* e) const { fieldRelease(e); }
};

/// An element of `fieldNew` held by a scope.
using FieldTemporary = std::unique_ptr<FieldElement, FieldReleaser>;

/// Copies the degree and as many bytes of `words` as the smaller capacity holds. Returns 1.
int fieldCopy(const FieldElement& source, FieldElement& destination);

/// Zeroes the words within the capacity; the degree stays.
void fieldClear(FieldElement& e);

/// Whether the low W words are zero; words above them are not looked at.
bool fieldIsZero(const FieldElement& e);

/// Whether the low W words hold 1.
bool fieldIsOne(const FieldElement& e);

/// -1, 0 or 1: the degrees are compared first, then the W words as one unsigned number.
int fieldCompare(const FieldElement& a, const FieldElement& b);

/// Degree of the polynomial in the low W words; 0 for the zero polynomial as well.
std::uint64_t fieldDegree(const FieldElement& e);

/// out := a + b over W words, with a's degree; higher words of `out` stay. Returns 1.
int fieldAdd(const FieldElement& a, const FieldElement& b, FieldElement& out);

/// a := a + b over W words. Returns 1.
int fieldAddTo(FieldElement& a, const FieldElement& b);

/// Shifts the words 0 to W left by one bit.
void fieldShiftLeftOne(FieldElement& e);

/// Divides the low W words by z, with the lowest bit of word W moving in at their top. The lower
/// half of word W is shifted on its own, and its upper half stays.
void fieldShiftRightOne(FieldElement& e);

/// Fills the element's ceil(m / 32) 32-bit words from `hostRandomBytes` and shifts the top one
/// right until it holds only bits of the field. Words above them are not touched.
void fieldRandom(FieldElement& e);

/// out := a * b, unreduced, by the right-to-left comb method (Guide to Elliptic Curve Cryptography,
/// algorithm 2.34). `out` must differ from both operands and have room for 2W words. Returns 1.
int fieldMultiply(const FieldElement& a, const FieldElement& b, FieldElement& out);

/// out := a * a, unreduced: 2W words made of `squareSpreadTable`, for which `out` must have room.
/// It must differ from `a`.
void fieldSquare(const FieldElement& a, FieldElement& out);

/// e := e mod f for an unreduced product. For degree 163 the polynomial is
/// z^163 + z^7 + z^6 + z^3 + 1 whatever f holds. Words above the product's are left alone there.
void fieldReduce(FieldElement& e, const FieldElement& f);

/// out := a / b modulo f, for a reduced b; `out` may be `a` or `b`. Zero when b is a multiple of f,
/// zero included.
void fieldDivide(const FieldElement& a, const FieldElement& b, FieldElement& out,
                 const FieldElement& f);

/// The element as an integer of W limbs, zero top limbs included, without a sign.
void fieldToInteger(const FieldElement& e, CoreInteger& integer);

/// Copies the limbs in use and zeroes the remaining words of the capacity; the degree stays.
void fieldFromInteger(const CoreInteger& integer, FieldElement& e);

/// Reads the stored form: a 32-bit bit count, four bytes that are not read, and the bits in 32-bit
/// words, least significant first. The bit count becomes the degree; the rest of `e` stays.
void fieldLoad(const std::uint8_t* stored, FieldElement& e);

}  // namespace core
