#include <algorithm>
#include <bit>
#include <new>

#include "core/memory.h"
#include "curve/field.h"

namespace core {

FieldElement* fieldNew(std::uint64_t degree) {
    auto* e = new (coreAlloc(sizeof(FieldElement), coreAllocZero)) FieldElement;
    e->degree = degree;
    e->capacity = ((degree / 8 + 95) & ~std::uint64_t{63}) - 16;
    return e;
}

void fieldRelease(FieldElement* e) {
    coreFree(e);
}

int fieldCopy(const FieldElement& source, FieldElement& destination) {
    destination.degree = source.degree;
    const std::uint64_t bytes = std::min(source.capacity, destination.capacity);
    std::copy_n(source.words.begin(), bytes / sizeof(std::uint64_t), destination.words.begin());
    return 1;
}

void fieldClear(FieldElement& e) {
    std::fill_n(e.words.begin(), e.capacity / sizeof(std::uint64_t), 0);
}

bool fieldIsZero(const FieldElement& e) {
    for (std::size_t i = 0; i < fieldWords(e.degree); ++i) {
        if (e.words[i] != 0) {
            return false;
        }
    }
    return true;
}

bool fieldIsOne(const FieldElement& e) {
    if (e.words[0] != 1) {
        return false;
    }
    for (std::size_t i = 1; i < fieldWords(e.degree); ++i) {
        if (e.words[i] != 0) {
            return false;
        }
    }
    return true;
}

int fieldCompare(const FieldElement& a, const FieldElement& b) {
    if (a.degree != b.degree) {
        return a.degree < b.degree ? -1 : 1;
    }
    for (std::size_t i = fieldWords(a.degree); i-- > 0;) {
        if (a.words[i] != b.words[i]) {
            return a.words[i] < b.words[i] ? -1 : 1;
        }
    }
    return 0;
}

std::uint64_t fieldDegree(const FieldElement& e) {
    for (std::size_t i = fieldWords(e.degree); i-- > 0;) {
        if (e.words[i] != 0) {
            return 64 * i + static_cast<std::uint64_t>(std::bit_width(e.words[i])) - 1;
        }
    }
    return 0;
}

int fieldAdd(const FieldElement& a, const FieldElement& b, FieldElement& out) {
    out.degree = a.degree;
    for (std::size_t i = 0; i < fieldWords(a.degree); ++i) {
        out.words[i] = a.words[i] ^ b.words[i];
    }
    return 1;
}

int fieldAddTo(FieldElement& a, const FieldElement& b) {
    for (std::size_t i = 0; i < fieldWords(a.degree); ++i) {
        a.words[i] ^= b.words[i];
    }
    return 1;
}

void fieldShiftLeftOne(FieldElement& e) {
    for (std::size_t i = fieldWords(e.degree); i > 0; --i) {
        e.words[i] = e.words[i] << 1 | e.words[i - 1] >> 63;
    }
    e.words[0] <<= 1;
}

void fieldShiftRightOne(FieldElement& e) {
    const std::size_t words = fieldWords(e.degree);
    for (std::size_t i = 0; i < words; ++i) {
        e.words[i] = e.words[i] >> 1 | e.words[i + 1] << 63;
    }
    constexpr std::uint64_t lowHalf = 0xFFFFFFFF;
    e.words[words] = (e.words[words] & ~lowHalf) | (e.words[words] & lowHalf) >> 1;
}

}  // namespace core
