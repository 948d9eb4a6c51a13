#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "tools/signature/byte_string.h"

// Values in the distinguished encoding rules of ITU-T X.690: a tag, the length of the content in
// its shortest form, the content.

/// Tags of the universal types that keys and signatures are made of.
inline constexpr std::uint8_t derIntegerTag = 0x02;
inline constexpr std::uint8_t derBitStringTag = 0x03;
inline constexpr std::uint8_t derOctetStringTag = 0x04;
inline constexpr std::uint8_t derObjectIdentifierTag = 0x06;
inline constexpr std::uint8_t derSequenceTag = 0x30;

/// Set in the first byte of a length in its long form; by itself, the length is indefinite.
inline constexpr std::uint8_t derLongForm = 0x80;

/// A SEQUENCE of these encoded values.
ByteString derSequence(std::initializer_list<ByteString> values);

/// The INTEGER that is the number of these bytes, most significant first. It is not negative, so a
/// zero byte goes in front of a set top bit; zeros in front of the bytes do not count, and no bytes
/// stand for zero.
ByteString derInteger(std::span<const std::uint8_t> bytes);

/// An INTEGER below 2^32.
ByteString derInteger(std::uint32_t value);

/// An OBJECT IDENTIFIER of two numbers at least, the first of which is 0 or 1 and the second below
/// 40.
ByteString derObjectIdentifier(std::initializer_list<std::uint32_t> numbers);

ByteString derOctetString(std::span<const std::uint8_t> bytes);

/// A BIT STRING of whole bytes.
ByteString derBitString(std::span<const std::uint8_t> bytes);

/// The encoded value under an explicit context-specific tag below 31.
ByteString derContext(std::uint8_t number, const ByteString& value);
