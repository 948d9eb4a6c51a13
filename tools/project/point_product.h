#pragma once

#include "curve/curve_domain.h"
#include "curve/field_element.h"
#include "curve/sect163r2.h"

/// The curve of all projects, with its published base point.
inline constexpr const core::CurveDomain& projectCurve = core::sect163r2.domain;

/// out := k * P on that curve.
void pointProduct(const core::FieldElement& k, const core::CurvePoint& P, core::CurvePoint& out);
