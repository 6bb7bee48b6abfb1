// How far a long walk has come, for a person who waits.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace RecTool {

/// One line on standard error, only on a terminal and only when it takes long; it is gone when the object goes.
class Progress {
public:
    explicit Progress(std::string file);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// For walkRecords; empty when nobody watches.
    [[nodiscard]] std::function<void(std::int64_t, std::int64_t)> callback();
    void clear();  ///< takes the line away, so that something else can be printed

private:
    void show(std::int64_t done, std::int64_t all);

    std::string m_file;
    std::chrono::steady_clock::time_point m_begin;
    bool m_shown = false;
};

}  // namespace RecTool
