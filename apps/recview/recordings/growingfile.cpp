// Following a file, record by record.
#include "growingfile.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <recording2/inspection/scan.h>

#include "keptcolumns.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;
using Inspection::Following;

std::unique_ptr<GrowingFile> GrowingFile::open(const std::string& path, Overviews& overviews, std::string& problem)
{
    if (!Inspection::isBeingWritten(path)) {
        problem = "The recording was never closed; `rectool recover` saves what is in it.";
        return nullptr;
    }
    std::optional<Following> following = Following::open(path, problem);
    if (!following) {
        return nullptr;
    }
    return std::unique_ptr<GrowingFile>(new GrowingFile(path, overviews, std::move(*following)));
}

GrowingFile::GrowingFile(std::string path, Overviews& overviews, Following following)
    : m_path(std::move(path)), m_overviews(overviews), m_following(std::move(following))
{
}

GrowingFile::~GrowingFile() = default;

/// The header and the types are there before the first record. Without times there is nothing to be drawn.
void GrowingFile::begin()
{
    m_hasBegun = true;
    if (!m_following.timesKnown()) {
        return;
    }
    Inspection::Summary summary;
    summary.header = m_following.header();
    summary.types = m_following.types();
    try {
        m_builder =
            std::make_unique<OverviewBuilder>(m_overviews.newStore(), summary, growingRecords(m_path), makeValuePart);
    } catch (const std::runtime_error&) {
        m_builder.reset();  // there is room nowhere: it is listed, and drawn once it is closed
    }
}

void GrowingFile::take(const Record& record)
{
    if (!m_hasBegun) {
        begin();
    }
    noteType(record, m_following.types(), m_recorded);
    m_lastTimeMs = std::max(m_lastTimeMs, record.timeMs);
    m_bytes = record.position + static_cast<std::int64_t>(record.data.size());
    if (m_builder != nullptr) {
        m_builder->add(record);
    }
}

bool GrowingFile::follow(std::chrono::milliseconds longest)
{
    const auto begin = std::chrono::steady_clock::now();
    bool tookAny = false;
    Record record;
    m_hasMore = true;
    while (std::chrono::steady_clock::now() - begin < longest) {
        m_hasMore = m_following.next(record);
        if (!m_hasMore) {
            break;
        }
        take(record);
        tookAny = true;
    }
    return tookAny;
}

FilePointer GrowingFile::file() const
{
    auto file = describedFile(m_path, m_following.header(), m_following.types());
    file->endMs = file->startMs + m_lastTimeMs;
    file->bytes = m_bytes;
    file->live = true;
    file->timesKnown = m_following.timesKnown();
    file->recorded = m_recorded;
    file->growing = m_builder == nullptr ? nullptr : m_builder->overview();
    if (file->growing != nullptr) {
        for (const Spectrum& spectrum : file->growing->spectra()) {
            file->recorded[spectrum.code].lowHz = spectrum.span.lowHz;
            file->recorded[spectrum.code].highHz = spectrum.span.highHz;
        }
    }
    return file;
}

std::shared_ptr<Overview> GrowingFile::finish()
{
    if (m_builder == nullptr || finalPath().empty()) {
        return nullptr;
    }
    m_builder->finish(static_cast<double>(m_following.header().stopMs));
    m_builder->overview()->setRecords(recordsOf(finalPath()));
    return m_builder->overview();
}

}  // namespace RecView
