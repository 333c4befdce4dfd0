#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace peakbox {

/// The integer at the start of `text`, as `strtol` reads it with base 0: 0x10 is 16, 010 is 8, 12abc is 12, abc is 0.
/// A number beyond 32 bits becomes the nearest 32-bit limit.
std::int32_t textToInteger(const char* text);

/// The number at the start of `text`, as `strtod` reads it; 0 when there is none.
double textToReal(const char* text);

/// How much of `text` is the number that `textToReal` reads.
enum class NumberPart { None, Some, All };
NumberPart findNumber(const std::string& text);

/// The finite decimal number that is all of `text`; nothing where that is anything else, a hexadecimal number too.
std::optional<double> textToDecimal(const std::string& text);

/// `value` as a stream's default format writes it, in six significant digits.
std::string realToText(double value);

}  // namespace peakbox
