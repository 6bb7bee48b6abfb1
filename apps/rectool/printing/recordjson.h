// Records and values as JSON text, written at the speed of the disk: a spectrum has thousands of cells, too many to
// build a document of. doc/rectool.md describes the shape; toJson in json.h reads it back where a document is wanted.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

#include "valuetext.h"

namespace RecTool {

/// Appends a value as one JSON object without a line break. Numbers that JSON does not have become null.
void appendJson(std::string& out, const values::ValueBase& value);

/// The same for the parts of a map: its channels as an object, a level rounded to hundredths.
void appendJson(std::string& out, const values::ChannelRange& range);
void appendLevelJson(std::string& out, float level);

/// Appends records, each as one JSON object without a line break.
class RecordJson {
public:
    /// @param names must outlive the object
    explicit RecordJson(const TypeNames& names) : m_names(names) {}

    /// @param value null when the record's data is not understood
    void append(std::string& out, const Recording2::Inspection::Record& record, const values::ValueBase* value);

private:
    const std::string& type(std::int32_t code);

    const TypeNames& m_names;
    std::map<std::int32_t, std::string> m_types;  // the fields that records of one type share
};

}  // namespace RecTool
