// Secrets of the system's random numbers.
#include "secret.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include <QByteArray>
#include <QRandomGenerator>

namespace RecView {

std::string newSecret()
{
    std::array<std::uint32_t, 6> numbers{};
    QRandomGenerator::system()->fillRange(numbers.data(), static_cast<qsizetype>(numbers.size()));
    const QByteArray bytes(reinterpret_cast<const char*>(numbers.data()), static_cast<int>(sizeof numbers));
    return bytes.toBase64(QByteArray::Base64UrlEncoding).toStdString();
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
