#include "tools/request/raw_request.h"

#include <new>

namespace {

const char* variable(const std::optional<std::string>& value) {
    return value.has_value() ? value->c_str() : nullptr;
}

}  // namespace

RawRequestSource::RawRequestSource(const RawRequest& request)
    : request_(request),
      // Only read from.
      body_(::fmemopen(const_cast<char*>(request.body.data()), request.body.size(), "r")) {
    if (body_ == nullptr) {
        throw std::bad_alloc();
    }
}

RawRequestSource::operator RequestSource() const {
    return {.contentType = variable(request_.contentType),
            .contentLength = variable(request_.contentLength),
            .body = body_.get()};
}
