// The head of a record, and how much to load.
#include "recordwindow.h"

#include <algorithm>
#include <charconv>

#include "../../format/encode.h"

namespace Recording2::Inspection {

namespace {

/// Digits and a separator. @return what stands behind them; null where nothing of the kind stands
const char* takeNumber(const char* from, const char* end, std::int32_t& value)
{
    const auto [behind, error] = std::from_chars(from, end, value);
    const bool sound = error == std::errc() && behind != end && *behind == Format::Separator && value >= 0;
    return sound ? behind + 1 : nullptr;
}

}  // namespace

std::optional<RecordWindow::Bytes> RecordWindow::at(std::int64_t position)
{
    m_missed = 0;
    const std::int64_t offset = position - m_begin;
    if (offset < 0 || offset >= static_cast<std::int64_t>(m_bytes.size())) {
        return std::nullopt;
    }
    const std::string_view rest = std::string_view(m_bytes).substr(static_cast<std::size_t>(offset));
    Bytes record;
    std::int32_t length = 0;
    const char* const end = rest.data() + rest.size();
    const char* data = takeNumber(rest.data(), end, record.code);
    data = data == nullptr ? nullptr : takeNumber(data, end, length);
    if (data == nullptr || length == 0) {
        return std::nullopt;
    }
    const auto head = static_cast<std::size_t>(data - rest.data());
    const std::size_t whole = head + static_cast<std::size_t>(length);
    if (whole > rest.size()) {
        m_missed = whole;
        return std::nullopt;
    }
    record.data = rest.substr(head, static_cast<std::size_t>(length));
    record.end = position + static_cast<std::int64_t>(whole);
    return record;
}

void RecordWindow::load(Format::ByteSource& source, std::int64_t position)
{
    constexpr std::size_t LargestLoad = std::size_t{256} * 1024;
    const std::int64_t into = position - m_begin;
    const bool goesOn = into > 0 && into <= static_cast<std::int64_t>(m_bytes.size());
    m_atOnce = goesOn ? std::min(2 * m_atOnce, LargestLoad) : SmallestLoad;
    const auto there = static_cast<std::size_t>(std::max<std::int64_t>(0, source.size() - position));
    const std::size_t wanted = m_missed > there ? m_atOnce : std::max(m_atOnce, m_missed);
    m_begin = position;
    m_bytes.resize(std::min(wanted, there));
    m_bytes.resize(source.readAt(position, m_bytes.data(), m_bytes.size()));
}

}  // namespace Recording2::Inspection
