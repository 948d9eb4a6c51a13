// Property: the decoder of request data accepts exactly the texts that a slow one accepts which
// works on single bits, with the same bytes, the zero byte in front of the last group included.

#include <string>
#include <vector>

#include "frontend/base64_decoder.h"
#include "fuzz/property.h"
#include "fuzz/reference_base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    std::vector<std::uint8_t> decoded;
    const bool accepted = base64Decode(text, decoded);
    const auto expected = referenceBase64(text);
    require(accepted == expected.has_value(), "both decoders accept or both refuse");
    require(!accepted || decoded == *expected, "both decoders give the same bytes");
    return 0;
}
