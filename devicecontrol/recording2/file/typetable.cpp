// Types of a table, each number once.
#include "typetable.h"

#include <typeinfo>
#include <unordered_set>
#include <utility>

#include "../format/layout.h"

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

void readTypes(Format::Cursor& cursor, CVTTypesData& types)
{
    std::int32_t count = 0;
    cursor.readNumber(count);
    TypeAdder adder(types);
    for (std::int32_t i = 0; i < count && !cursor.atEnd(); ++i) {
        Format::TypeEntryRecord entry;
        Format::readTypeEntry(cursor, entry);
        adder.add({entry.typeNumber, entry.valueType, std::move(entry.keyword), std::move(entry.valuePath)});
    }
}

}  // namespace Recording2
