// A source for tests that is due at given times and notes what happens to it.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <vkbase/quonos.h>

#include "sources/source.h"

namespace RecStation {

class ScriptedSource final : public Source {
public:
    ScriptedSource(std::string name, std::vector<unsigned long long> times, std::vector<std::string>& log)
        : m_name(std::move(name)), m_times(std::move(times)), m_log(log)
    {
    }

    [[nodiscard]] QString name() const override { return QString::fromStdString(m_name); }
    void prepare() override { m_log.push_back(m_name + " prepared"); }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        ++m_asked;
        return m_next < m_times.size() ? std::optional(m_times[m_next]) : std::nullopt;
    }
    void step() override
    {
        ++m_next;
        m_log.push_back(m_name + "@" + std::to_string(QuonOS::Create()->CurrentTime()));
        if (onStep) {
            onStep();
        }
    }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override { return unfinished; }
    [[nodiscard]] SourceReport report() const override { return {m_next, 0, 0}; }
    [[nodiscard]] int asked() const { return m_asked; }

    std::function<void()> onStep;
    std::optional<unsigned long long> unfinished;

private:
    std::string m_name;
    std::vector<unsigned long long> m_times;
    std::vector<std::string>& m_log;
    std::size_t m_next = 0;
    int m_asked = 0;
};

}  // namespace RecStation
