#include "tests/faults/random_choice.h"

using namespace std::string_literals;

std::string randomText() {
    const std::vector<std::uint8_t> bytes = randomBytes(randomBelow(12));
    return {bytes.begin(), bytes.end()};
}

void mutate(std::string& text) {
    static const std::string punctuation = " \n=&%+-\0A{}[]\",:"s;
    const std::size_t at = randomBelow(text.size() + 1);
    const char byte = oneIn(2) ? static_cast<char>(randomBelow(256)) : oneOf(punctuation);
    switch (randomBelow(4)) {
        case 0:
            text.insert(at, 1, byte);
            break;
        case 1:
            text.erase(at, 1 + randomBelow(3));
            break;
        case 2:
            text.resize(oneIn(4) ? at : text.size());
            break;
        default:
            if (at < text.size()) {
                text[at] = byte;
            }
    }
}
