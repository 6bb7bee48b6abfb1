// Reading: header and type table, and the records by the reader of the file.
#include <exception>
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "format/layout.h"

namespace Recording2 {

namespace {

/// Adds types to a table. A table may have very many and searches them one by one: numbers that are there are known
/// here.
class TypeAdder {
public:
    explicit TypeAdder(CVTTypesData& types) : m_types(types), m_isPlain(typeid(types) == typeid(CVTTypesData))
    {
        if (m_isPlain) {
            for (const S_TYPES& type : types.get_vector()) {
                m_numbers.insert(type.typeNumber);
            }
        }
    }
    void add(S_TYPES type)
    {
        if (!m_isPlain) {  // what a derived table does with it is its own affair
            m_types.add_item(std::move(type));
        } else if (m_numbers.insert(type.typeNumber).second) {
            m_types.get_vector().push_back(std::move(type));
        }
    }

private:
    CVTTypesData& m_types;
    bool m_isPlain;
    std::unordered_set<std::int32_t> m_numbers;
};

}  // namespace

Format::HeaderStatus CFileAccess::Private::readHeader(CHeaderData& header)
{
    Format::Cursor& cursor = shared->input->cursor;
    const std::int64_t back = cursor.position();
    cursor.seek(0);
    Format::HeaderRecord record = toRecord(header, positions);
    record.majorVersion = 0;  // a version that cannot be read is none, whatever the object held
    record.minorVersion = 0;
    const Format::HeaderStatus status = Format::readHeader(cursor, record);
    if (status == Format::HeaderStatus::Ok) {
        fromRecord(record, header);
        positions = record.positions;
    }
    cursor.seek(back);
    return status;
}

unsigned long long CFileAccess::read(CHeaderData& header)
{
    if (d->goodInput() == nullptr) {
        return 0;
    }
    try {
        return d->readHeader(header) == Format::HeaderStatus::Ok ? 1 : 0;
    } catch (const std::exception&) {
        d->valid = false;
        return 0;
    }
}

unsigned long long CFileAccess::read(CVTTypesData& types)
{
    OpenInput* input = d->goodInput();
    if (input == nullptr) {
        return 0;
    }
    try {
        Format::Cursor& cursor = input->cursor;
        cursor.seek(d->positions.typeTable);
        std::int32_t count = 0;
        cursor.readNumber(count);
        TypeAdder adder(types);
        // Past the end of the file there is nothing more to read, whatever the count says.
        for (std::int32_t i = 0; i < count && !cursor.atEnd(); ++i) {
            Format::TypeEntryRecord entry;
            Format::readTypeEntry(cursor, entry);
            adder.add({entry.typeNumber, entry.valueType, std::move(entry.keyword), std::move(entry.valuePath)});
        }
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

RecordReader CFileAccess::Private::reader() const
{
    return {shared->input.get(), shared->index.get(), positions};
}

unsigned long long CFileAccess::read(CVTCmdData& record)
{
    return d->reader().read(record);
}

unsigned long long CFileAccess::readAndReturnTimeOfCurrentCmd(CVTCmdData& record)
{
    return d->reader().readAndReturnItsTime(record);
}

unsigned long long CFileAccess::read(CVTCmdData& record, unsigned long long time)
{
    return d->reader().read(record, time);
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record)
{
    return d->reader().readFirst(record);
}

unsigned long long CFileAccess::readnext(CVTCmdData& record)
{
    return d->reader().read(record, 0);
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record, std::int32_t code)
{
    return d->reader().readFirst(record, code);
}

unsigned long long CFileAccess::readnext(CVTCmdData& record, std::int32_t code)
{
    return d->reader().readNext(record, code);
}

unsigned long long CFileAccess::readprev(CVTCmdData& record, unsigned long long time)
{
    return d->reader().readBefore(record, time);
}

bool CFileAccess::AtEndOfRecords() const
{
    return d->reader().atEnd();
}

void CFileAccess::GoToFirstRecord()
{
    if (d->shared->input != nullptr) {
        d->shared->input->cursor.seek(d->positions.firstRecord);
    }
}

}  // namespace Recording2
