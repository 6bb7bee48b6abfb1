// What Recording2.dll exports: the two entry points and the classes of the interface, all of them and nothing else.
#include <cxxabi.h>

#include <regex>

#include <windows.h>

#include "support/testing.h"

namespace {

using namespace testing;

std::string demangled(const char* name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                           std::free);
    const std::string found = std::regex_replace(status == 0 ? text.get() : name, std::regex(R"(\[abi:cxx11\])"), "");
    return std::regex_replace(found, std::regex(R"(std::__cxx11::basic_string<char, [^>]*>, std::allocator<char> >)"),
                              "std::string");
}

/// The plug-in, mapped like a program but not started.
class Image {
public:
    Image()
        : m_module(LoadLibraryExW(std::wstring(Path.begin(), Path.end()).c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES))
    {
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image() { FreeLibrary(m_module); }

    [[nodiscard]] bool loaded() const { return m_module != nullptr; }
    [[nodiscard]] std::set<std::string> exports() const
    {
        const auto* dos = at<IMAGE_DOS_HEADER>(0);
        const auto* headers = at<IMAGE_NT_HEADERS>(static_cast<std::uint32_t>(dos->e_lfanew));
        const IMAGE_DATA_DIRECTORY& place = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
        const auto* directory = at<IMAGE_EXPORT_DIRECTORY>(place.VirtualAddress);
        const auto* names = at<DWORD>(directory->AddressOfNames);
        std::set<std::string> found;
        for (DWORD i = 0; i < directory->NumberOfNames; ++i) {
            found.insert(demangled(at<char>(names[i])));
        }
        return found;
    }

private:
    template <typename T>
    [[nodiscard]] const T* at(std::uint32_t offset) const
    {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(m_module) + offset);
    }

    inline static const std::string Path = RECORDER_PLUGIN;
    HMODULE m_module;
};

std::set<std::string> listedOperations()
{
    std::set<std::string> operations;
    std::ifstream list(INTERFACE_LIST);
    for (std::string line; std::getline(list, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && line.front() != '#') {
            operations.insert(line);
        }
    }
    return operations;
}

TEST(PluginExports, HoldEveryOperationOfTheInterface)
{
    const Image image;
    ASSERT_TRUE(image.loaded());
    const std::set<std::string> exports = image.exports();
    const std::set<std::string> operations = listedOperations();
    ASSERT_GT(operations.size(), 90U);
    for (const std::string& operation : operations) {
        EXPECT_THAT(exports, Contains(operation));
    }
}

TEST(PluginExports, HoldNothingButTheEntryPointsAndTheClassesOfTheInterface)
{
    const Image image;
    ASSERT_TRUE(image.loaded());
    const std::regex allowed(
        "VKCreate|VKDestroy|(vtable for |typeinfo for |typeinfo name for )?"
        "Recording2::(CTimeStamp|CHeaderData|CVTCmdData|S_TYPES|CVTTypesData|CFileAccess|MappingGenerator)(::.*)?");
    std::set<std::string> others;
    for (const std::string& name : image.exports()) {
        if (!std::regex_match(name, allowed)) {
            others.insert(name);
        }
    }
    EXPECT_THAT(others, IsEmpty());
}

TEST(PluginVersion, IsThatOfTheProject)
{
    const std::string path = RECORDER_PLUGIN;
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeA(path.c_str(), &unused);
    ASSERT_GT(size, 0U);
    std::string information(size, '\0');
    ASSERT_TRUE(GetFileVersionInfoA(path.c_str(), 0, size, information.data()));
    void* text = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(information.data(), "\\StringFileInfo\\040904E4\\ProductVersion", &text, &length));
    EXPECT_STREQ(static_cast<const char*>(text), PROJECT_VERSION);
    ASSERT_TRUE(VerQueryValueA(information.data(), "\\StringFileInfo\\040904E4\\OriginalFilename", &text, &length));
    EXPECT_STREQ(static_cast<const char*>(text), "Recording2.dll");
}

}  // namespace
