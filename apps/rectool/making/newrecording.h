// A recording that is made of others: written beside its final name, read back, and only then given that name.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <QCryptographicHash>

#include <recording2/file/recordingwriter.h>
#include <recording2/inspection/inspection.h>

#include "newfile.h"
#include "printing/exitcode.h"
#include "printing/json.h"
#include "system/interrupt.h"

namespace RecTool {

/// What was written, for the summary.
struct NewRecordingResult {
    std::uint64_t records = 0;
    std::int64_t bytes = 0;  ///< of the file
    Recording2::Inspection::Header header;
    std::size_t bookmarks = 0;
    std::size_t channelRanges = 0;
};

/// Lines that name the file and say what it holds.
void print(const std::string& path, const NewRecordingResult& result);
[[nodiscard]] Json toJson(const std::string& path, const NewRecordingResult& result);

/// The steps are called in their order; the first that does not give Fine is the end, and has told why. Unless finish
/// gives Fine, nothing is left behind and a file that has the name already stays as it is.
class NewRecording {
public:
    /// @param path of the new file
    /// @param replace an existing file may be replaced
    NewRecording(std::string path, bool replace);
    NewRecording(const NewRecording&) = delete;
    NewRecording& operator=(const NewRecording&) = delete;
    ~NewRecording();

    /// Whether the name may be taken: it is none of the inputs', and free unless it may be replaced.
    [[nodiscard]] ExitCode check(const std::vector<std::string>& inputs) const { return m_name.check(inputs); }
    [[nodiscard]] ExitCode create(const std::vector<Recording2::Inspection::TypeEntry>& types);
    /// Appends a record. Times must ascend, data must not be empty.
    void write(std::int32_t code, const std::string& data, std::uint64_t time, bool isChannelRange);
    /// Enters a time into the channel range table, that of a record or not.
    void addChannelRange(std::uint64_t time) { m_channelRanges.push_back(time); }
    /// @param header texts that are too long for it are cut
    [[nodiscard]] ExitCode finish(const Recording2::Inspection::Header& header,
                                  const std::map<std::uint64_t, std::string>& bookmarks);
    [[nodiscard]] const NewRecordingResult& result() const { return m_result; }

private:
    /// Every record that is written, and then every one that is read back.
    class Digest {
    public:
        void add(std::int32_t code, const std::string& data, std::uint64_t time);
        [[nodiscard]] std::uint64_t records() const { return m_records; }
        [[nodiscard]] QByteArray value() const { return m_hash.result(); }

    private:
        QCryptographicHash m_hash{QCryptographicHash::Sha1};
        std::uint64_t m_records = 0;
    };

    [[nodiscard]] std::string close(const Recording2::Inspection::Header& header,
                                    const std::map<std::uint64_t, std::string>& bookmarks);
    [[nodiscard]] std::string readBack(const std::map<std::uint64_t, std::string>& bookmarks);

    NewName m_name;
    Interrupt m_interrupt;
    Recording2::RecordingWriter m_file;
    std::vector<Recording2::Inspection::TypeEntry> m_types;
    std::vector<std::uint64_t> m_times;
    std::vector<std::uint64_t> m_channelRanges;
    Digest m_written;
    NewRecordingResult m_result;
};

}  // namespace RecTool
