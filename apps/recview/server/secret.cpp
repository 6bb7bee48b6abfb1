// Secrets of the system's random numbers.
#include "secret.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include <QRandomGenerator>

namespace RecView {

std::string newSecret()
{
    constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    constexpr std::uint32_t DigitBits = 6;
    constexpr std::size_t DigitsPerNumber = 4;  // 24 of 32 bits
    std::array<std::uint32_t, 8> numbers{};
    QRandomGenerator::system()->fillRange(numbers.data(), static_cast<qsizetype>(numbers.size()));
    std::string secret;
    for (std::uint32_t number : numbers) {
        for (std::size_t i = 0; i < DigitsPerNumber; ++i) {
            secret += Digits[number % Digits.size()];
            number >>= DigitBits;
        }
    }
    return secret;
}

bool isSameSecret(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) {
        return false;
    }
    unsigned int difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned int>(static_cast<unsigned char>(b[i]));
    }
    return difference == 0;
}

}  // namespace RecView
