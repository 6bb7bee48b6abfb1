// What other processes may do with a file that the library has open.
#include <windows.h>

#include <recording2/file/files.h>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace {

using namespace Recording2;

/// The error of opening a file so, 0 for none.
DWORD errorOfOpening(const QString& path, DWORD access, DWORD sharing)
{
    const std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    HANDLE file = CreateFileW(name.c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    CloseHandle(file);
    return 0;
}

class Sharing : public testing::Test {
protected:
    Sharing() { TestSupport::writeFile(path, "something"); }

    const QTemporaryDir directory;
    const QString path = directory.filePath("file");
    const std::string name = TestSupport::fileName8(path);
};

TEST_F(Sharing, AFileOpenForUpdateIsSharedForReadingAndWriting)
{
    const OutputFile output(name, OpenMode::Update);
    ASSERT_TRUE(output.good());
    EXPECT_EQ(errorOfOpening(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE), 0U);
    // Who does not share it cannot have it: it is really open.
    EXPECT_EQ(errorOfOpening(path, GENERIC_READ, 0), DWORD{ERROR_SHARING_VIOLATION});
}

TEST_F(Sharing, AFileThatIsReadIsSharedForReadingAndWriting)
{
    const InputFile input(name);
    ASSERT_TRUE(input.good());
    EXPECT_EQ(errorOfOpening(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE), 0U);
    EXPECT_EQ(errorOfOpening(path, GENERIC_READ, 0), DWORD{ERROR_SHARING_VIOLATION});
}

TEST_F(Sharing, AClosedFileIsNobodys)
{
    {
        const OutputFile output(name, OpenMode::Update);
    }
    EXPECT_EQ(errorOfOpening(path, GENERIC_READ, 0), 0U);
}

}  // namespace
