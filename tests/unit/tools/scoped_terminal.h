#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

/// While it lives, this standard descriptor is a terminal.
class ScopedTerminal {
public:
    explicit ScopedTerminal(int standard)
        : standard_(standard), ours_(::posix_openpt(O_RDWR | O_NOCTTY)), saved_(::dup(standard)) {
        if (::grantpt(ours_) != 0 || ::unlockpt(ours_) != 0) {
            throw std::runtime_error("no terminal");
        }
        const int theirs = ::open(::ptsname(ours_), O_RDWR | O_NOCTTY);
        ::dup2(theirs, standard_);
        ::close(theirs);
    }
    ~ScopedTerminal() {
        ::dup2(saved_, standard_);
        ::close(saved_);
        ::close(ours_);
    }
    ScopedTerminal(const ScopedTerminal&) = delete;
    ScopedTerminal& operator=(const ScopedTerminal&) = delete;

    /// Types this: Ctrl-D ('\4') at the start of a line ends the input.
    void type(std::string_view text) const {
        if (::write(ours_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("the terminal takes no input");
        }
    }

    /// Waits until this text has been written to the terminal; gives all that was.
    std::string waitFor(std::string_view text) const {
        std::string shown;
        std::array<char, 4096> part{};
        while (shown.find(text) == std::string::npos) {
            const ssize_t count = ::read(ours_, part.data(), part.size());
            if (count <= 0) {
                ADD_FAILURE() << "the terminal ends after " << shown.size() << " bytes";
                break;
            }
            shown.append(part.data(), static_cast<std::size_t>(count));
        }
        return shown;
    }

private:
    int standard_;
    int ours_;
    int saved_;
};
