// Reads the TOML file, keeps it as the configuration in force, gives its tables.
#include <startup/cfgcenter.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QFile>

#include <tomltext/tomltext.h>
#include <vkbase/vkexception.h>

namespace {

const char* const SourceName = "startup\\cfgcenter";

/// A configuration file as it was read; shared by every ICfg that looks into it.
struct Document {
    toml::table root;
    std::string fileName;
};

using DocumentPtr = std::shared_ptr<const Document>;

/// The configuration in force; null when there is none.
DocumentPtr& Current()
{
    static DocumentPtr document;
    return document;
}

const char* TypeName(toml::node_type type)
{
    // In the order of the parser's kinds.
    constexpr std::array Names{
        "nothing",   "a table", "an array", "a string",       "an integer", "a floating-point number",
        "a boolean", "a date",  "a time",   "a date and time"};
    return Names.at(static_cast<std::size_t>(type));
}

[[noreturn]] void ThrowAt(const std::string& fileName, toml::source_index line, const std::string& message,
                          const char* function)
{
    throw VKException(fileName + ":" + std::to_string(line) + ": " + message, SourceName, function, 0);
}

/// The names of a table's keys in file order; toml++ itself sorts them by name.
QStringList KeysInFileOrder(const toml::table& table, bool tablesOnly)
{
    std::vector<std::pair<toml::source_position, const toml::key*>> keys;
    for (const auto& [key, node] : table) {
        if (!tablesOnly || node.is_table()) {
            keys.emplace_back(key.source().begin, &key);
        }
    }
    std::sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList names;
    for (const auto& entry : keys) {
        names << QString::fromStdString(std::string(entry.second->str()));
    }
    return names;
}

class TableCfg : public ICfg {
public:
    TableCfg(DocumentPtr document, const toml::table& table)
        : m_document(std::move(document)), m_table(table), m_keys(KeysInFileOrder(table, false))
    {
    }

    [[nodiscard]] QString ReadString(const QString& key, const QString& defaultValue) const override
    {
        const auto* value = Find<std::string>(key, toml::node_type::string, "ICfg::ReadString");
        return value == nullptr ? defaultValue : QString::fromStdString(value->get());
    }

    [[nodiscard]] std::int32_t ReadInteger(const QString& key, std::int32_t defaultValue) const override
    {
        const auto* value = Find<std::int64_t>(key, toml::node_type::integer, "ICfg::ReadInteger");
        if (value == nullptr) {
            return defaultValue;
        }
        using Limits = std::numeric_limits<std::int32_t>;
        if (value->get() < Limits::min() || value->get() > Limits::max()) {
            ThrowWrongValue(key, *value, "an integer of 32 bits", std::to_string(value->get()), "ICfg::ReadInteger");
        }
        return static_cast<std::int32_t>(value->get());
    }

    [[nodiscard]] bool ReadBoolean(const QString& key, bool defaultValue) const override
    {
        const auto* value = Find<bool>(key, toml::node_type::boolean, "ICfg::ReadBoolean");
        return value == nullptr ? defaultValue : value->get();
    }

    [[nodiscard]] ICfg* OpenSection(const QString& name, CfgCenter::View /*view*/) const override
    {
        const auto* table = Find<toml::table>(name, toml::node_type::table, "ICfg::OpenSection");
        return table == nullptr ? nullptr : std::make_unique<TableCfg>(m_document, *table).release();
    }

    [[nodiscard]] QString KeyName(std::int32_t index) const override { return m_keys.value(index); }

private:
    /// The node of the key as the type asked for, null when the key is missing.
    template <typename T>
    auto Find(const QString& key, toml::node_type type, const char* function) const
        -> decltype(std::declval<const toml::node&>().as<T>())
    {
        const toml::node* node = m_table.get(key.toStdString());
        if (node != nullptr && node->type() != type) {
            ThrowWrongValue(key, *node, TypeName(type), TypeName(node->type()), function);
        }
        return node == nullptr ? nullptr : node->as<T>();
    }

    [[noreturn]] void ThrowWrongValue(const QString& key, const toml::node& node, const std::string& expected,
                                      const std::string& found, const char* function) const
    {
        ThrowAt(m_document->fileName, node.source().begin.line,
                "key \"" + key.toStdString() + "\": expected " + expected + ", found " + found, function);
    }

    DocumentPtr m_document;
    const toml::table& m_table;  // inside the document
    QStringList m_keys;
};

void Load(const std::string& text, const QString& fileName)
{
    const std::string name = fileName.toStdString();
    try {
        Current() = std::make_shared<const Document>(Document{TomlText::parse(text), name});
    } catch (const TomlText::Error& error) {
        ThrowAt(name, error.line(), error.what(), "CfgCenter");
    }
}

// Windows ends its reasons with a full stop.
std::string reasonOf(const QFile& file)
{
    const QString reason = file.errorString();
    return (reason.endsWith('.') ? reason.chopped(1) : reason).toStdString();
}

}  // namespace

ICfg::~ICfg() = default;

void CfgCenter::LoadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw VKException(
            "The configuration file \"" + path.toStdString() + "\" cannot be read: " + reasonOf(file) + ".", SourceName,
            "CfgCenter::LoadFile", 0);
    }
    Load(file.readAll().toStdString(), path);
}

void CfgCenter::LoadText(const QString& text, const QString& fileName)
{
    Load(text.toStdString(), fileName);
}

void CfgCenter::Clear()
{
    Current().reset();
}

QStringList CfgCenter::InstanceNames()
{
    return Current() == nullptr ? QStringList() : KeysInFileOrder(Current()->root, true);
}

ICfg* CfgCenter::CreateCfg(const QString& name, View view, const QString& section)
{
    if (Current() == nullptr) {
        return nullptr;
    }
    std::unique_ptr<ICfg> table(TableCfg(Current(), Current()->root).OpenSection(name, view));
    if (table == nullptr || section.isEmpty()) {
        return table.release();
    }
    return table->OpenSection(section, view);
}
