// What the code under test prints goes nowhere.
#pragma once

#include <iostream>
#include <streambuf>

namespace Fuzzing {

/// Takes everything and keeps nothing.
class Nowhere final : public std::streambuf {
protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
};

/// While one stands, standard output and errors are lost.
class Silence {
public:
    Silence() : m_output(std::cout.rdbuf(&m_nowhere)), m_errors(std::cerr.rdbuf(&m_nowhere)) {}
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence()
    {
        std::cout.rdbuf(m_output);
        std::cerr.rdbuf(m_errors);
        std::cout.clear();
        std::cerr.clear();
    }

private:
    Nowhere m_nowhere;
    std::streambuf* m_output;
    std::streambuf* m_errors;
};

}  // namespace Fuzzing
