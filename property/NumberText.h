#pragma once

#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

namespace Morvane::Property {

/// A value as a default output stream writes it, whatever the process's locale: integers in decimal, booleans
/// as "1" and "0", floating point with six significant digits and no trailing zeros, pointers as "0x1f".
template <typename T>
std::string numberText(const T& value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

/// Reads the numbers of a text one after the other, separated by white space, as an input stream does, but
/// never touches a field for which nothing can be read:
/// - leading blanks are skipped, a number ends at the first character that cannot continue it;
/// - a number beyond its type's range gives the nearest value of the type;
/// - after the first number that is missing, unreadable or out of range, all later reads do nothing;
/// - a boolean is any integer, true unless it is 0; a pointer is hexadecimal, with or without "0x".
class NumberReader {
public:
    explicit NumberReader(const std::string& text) : stream(text) { stream.imbue(std::locale::classic()); }

    template <typename T>
    NumberReader& operator>>(T& field) {
        if constexpr (std::is_same_v<T, bool>) {
            long number = field;
            *this >> number;
            field = number != 0;
        } else if (!stream.fail()) {
            T number{};
            stream >> number;
            // A failed read leaves zero where nothing was readable and the limit where it was out of range.
            if (!stream.fail() || number != T{}) {
                field = number;
            }
        }
        return *this;
    }

private:
    std::istringstream stream;
};

/// The number at the start of `text` into `field`, which keeps its value when there is none.
template <typename T>
void readNumber(const std::string& text, T& field) {
    NumberReader(text) >> field;
}

}  // namespace Morvane::Property
