// Uses every library of the installed package: records two values with the file access and reads them back.
#include <cstdio>
#include <string>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <recording2/fileaccess.h>
#include <recording2/loadinterface.h>
#include <recording2/recordmodel.h>
#include <recording2/timestamp.h>
#include <startup/cfgcenter.h>
#include <values/tree.h>
#include <values/value.h>
#include <vkbase/quonos.h>
#include <zelvo/zelvo.h>

using namespace Recording2;

namespace {

int g_failures = 0;

void Expect(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "expected: %s\n", what);
        ++g_failures;
    }
}

CVTCmdData Record(int code, const char* data)
{
    CVTCmdData record;
    record.set_cmd(code);
    record.set_str(data, 0);
    return record;
}

void Write(const std::string& folder)
{
    Zelvo::ZelvoClient client;
    CFileAccess file(folder.c_str(), "/Status", "outside.tmp", true, false, false, nullptr, &client);
    Expect(file.IsValidFile(), "a file that can be written");

    CVTTypesData types;
    S_TYPES level;
    level.typeNumber = 3;
    level.keyword = "LEVEL";
    level.valuePath = "/LEVEL";
    types.add_item(level);
    file.write(types);
    CVTCmdData first = Record(3, "first");
    CVTCmdData second = Record(3, "second");
    file.write(first, 10, false);
    file.write(second, 20, false);

    CHeaderData header;
    header.set_version(2, 0);
    header.set_deviceName("outside");
    header.set_startTS(CTimeStamp(1'700'000'000'000'000ULL));
    file.CloseRecording(header, false);
}

void ReadBack(const QString& path)
{
    Expect(QFile::exists(path), "the finished file under its final name");
    CFileAccess file(QFile::encodeName(path).constData(), QString(), nullptr, false, true, false, nullptr, nullptr);
    Expect(file.IsValidFile(), "a file that can be read");
    CHeaderData header;
    Expect(file.read(header) == 1, "a header");
    Expect(std::string(header.deviceName()) == "outside", "the device name");
    Expect(header.startTS().getTimeStamp() == 1'700'000'000'000'000ULL, "the start time");

    CVTTypesData types;
    Expect(file.read(types) == 1, "a type table");
    S_TYPES level;
    Expect(types.find_type(3, level) && level.keyword == "LEVEL", "the type table's entry");

    CVTCmdData record;
    Expect(file.readfirst(record) == 20 && std::string(record.str()) == "first", "the first record");
    Expect(file.readnext(record) == 0 && std::string(record.str()) == "second", "the second and last record");
}

void UseTheRecorder()
{
    const values::Tree tree;
    CfgCenter::LoadText("[Rec]\nValuePath = \"/Rec\"\nStatusValuePath = \"/Rec/Status\"\n", "outside.toml");
    IDllInstance* recorder = VKCreate(L"Rec");
    Expect(recorder != nullptr, "a recorder");
    const auto* loaded = dynamic_cast<const values::Value<bool>*>(tree.Find("/Rec/REC_LOADED"));
    Expect(loaded != nullptr && loaded->GetValue(), "the recorder's status values in the program's own tree");
    VKDestroy(recorder);
    Expect(loaded != nullptr && !loaded->GetValue(), "the end of the recorder to be seen there");
}

}  // namespace

int main()
{
    const QTemporaryDir directory;
    const QString folder = directory.path() + QDir::separator();
    Expect(QuonOS::Create()->CurrentTime() > 0, "a clock");
    Write(QFile::encodeName(folder).toStdString());
    ReadBack(folder + "outside.rec");
    UseTheRecorder();
    return g_failures == 0 ? 0 : 1;
}
