// What a request asks for, checked: whatever is wrong becomes one sentence that names the parameter.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "server/http.h"

namespace RecView {

/// An answer that is none: a status and one sentence.
class Refusal : public std::runtime_error {
public:
    Refusal(int status, const std::string& sentence) : std::runtime_error(sentence), m_status(status) {}
    [[nodiscard]] int status() const { return m_status; }

private:
    int m_status;
};

/// What was asked for rightly, but is not there: no error, which browsers would write into their logs.
class Absent : public std::runtime_error {
public:
    enum class Until : unsigned char { Ever, Soon };

    Absent(Until until, const std::string& sentence) : std::runtime_error(sentence), m_until(until) {}
    [[nodiscard]] Until until() const { return m_until; }

private:
    Until m_until;
};

/// The parameters of a request. All of this throws a Refusal with status 400.
class Parameters {
public:
    /// @param known all that there are; another one is refused
    Parameters(const Request& request, std::initializer_list<const char*> known);

    [[nodiscard]] bool has(const std::string& name) const { return m_query.count(name) > 0; }
    [[nodiscard]] const std::string& text(const std::string& name) const;  ///< required; not empty
    /// One of some words; the first of them where it is missing.
    [[nodiscard]] std::string word(const std::string& name, const std::vector<std::string>& words) const;
    [[nodiscard]] double moment(const std::string& name) const;     ///< required; milliseconds since 1970
    [[nodiscard]] double frequency(const std::string& name) const;  ///< required; Hz
    [[nodiscard]] bool flag(const std::string& name) const;         ///< "1", or "0" or missing
    /// @param otherwise where it is missing; without, it is required
    [[nodiscard]] std::int64_t whole(const std::string& name, std::int64_t least, std::int64_t most,
                                     std::optional<std::int64_t> otherwise = std::nullopt) const;

    struct Span {
        double from = 0;
        double to = 0;
    };
    [[nodiscard]] Span moments() const;      ///< "from" and "to", in this order
    [[nodiscard]] Span stretch() const;      ///< the same, which must be apart
    [[nodiscard]] Span frequencies() const;  ///< "low" and "high", in this order; everything where both are missing
    /// The same, which must be apart. @param lowest, highest where both are missing
    [[nodiscard]] Span band(double lowest, double highest) const;

private:
    [[nodiscard]] double number(const std::string& name, const char* what) const;

    const std::map<std::string, std::string>& m_query;
};

}  // namespace RecView
