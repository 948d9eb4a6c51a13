// Property: form text of any bytes decodes to what the standard stream extracts from the two bytes
// behind each "%", and the pairs of the text are those of a reader that cuts it piece by piece.

#include "frontend/form_input.h"
#include "fuzz/property.h"
#include "fuzz/reference_form.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const std::string decoded = formDecode(text);
    require(decoded == referenceFormDecode(text), "each escape is the number of the stream");
    require(decoded.size() <= text.size(), "decoding does not lengthen a text");
    FormParameters parameters;
    parseFormPairs(parameters, text);
    require(parameters == referenceFormPairs(text), "the pairs are those of the slow reader");
    return 0;
}
