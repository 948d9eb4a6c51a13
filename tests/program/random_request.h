#pragma once

#include "tests/program/request_material.h"
#include "tools/request/raw_request.h"

/// A request that is good, or wrong in some ways, or hardly one at all.
RawRequest randomRequest(const RequestMaterial& material);
