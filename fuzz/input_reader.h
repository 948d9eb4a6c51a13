#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A text as its reader sees it that stops at the first zero byte.
inline std::string terminatedText(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

/// Takes the bytes of a fuzz input from the front; what is not there any more counts as zero bytes
/// for single ones and as nothing for runs.
class InputReader {
public:
    InputReader(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    std::uint8_t byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *next_++;
    }

    /// At most this many bytes.
    std::vector<std::uint8_t> bytes(std::size_t limit) {
        const std::size_t count = std::min(limit, left_);
        std::vector<std::uint8_t> taken(next_, next_ + count);
        next_ += count;
        left_ -= count;
        return taken;
    }

    /// The text up to the next line feed, which is taken and dropped.
    std::string line() {
        std::string text;
        while (left_ != 0) {
            const char character = static_cast<char>(byte());
            if (character == '\n') {
                break;
            }
            text.push_back(character);
        }
        return text;
    }

    std::string rest() {
        const std::vector<std::uint8_t> taken = bytes(left_);
        return {taken.begin(), taken.end()};
    }

    std::size_t left() const { return left_; }

private:
    const std::uint8_t* next_;
    std::size_t left_;
};
