#pragma once

#include "curve/curve_domain.h"
#include "curve/field_element.h"

/// out := k * P on the curve of all projects.
void pointProduct(const core::FieldElement& k, const core::CurvePoint& P, core::CurvePoint& out);
