// SigMF metadata: what is read of it, and files that are refused.
#include <string>

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iqtesting.h"
#include "sources/iq/sigmf.h"

namespace {

using recstation::readSigMf;
using recstation::SigMfMetadata;
using testing::AllOf;
using testing::HasSubstr;

class SigMf : public testing::Test {
protected:
    SigMfMetadata read(const QByteArray& text)
    {
        iqtesting::writeFile(path(), text);
        return readSigMf(path());
    }
    // What is said about a file that cannot be used.
    std::string problem(const QByteArray& text)
    {
        try {
            read(text);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no problem";
    }
    [[nodiscard]] QString path() const { return m_directory.filePath(QStringLiteral("x.sigmf-meta")); }

private:
    QTemporaryDir m_directory;
};

TEST_F(SigMf, AllThatAReceiverNeedsIsRead)
{
    const SigMfMetadata metadata = read(R"({
        "global": {"core:datatype": "ci16_le", "core:sample_rate": 2.5e6, "core:version": "1.0.0"},
        "captures": [{"core:sample_start": 0, "core:frequency": 1090000000,
                      "core:datetime": "2026-11-21T08:30:00.000250Z"}],
        "annotations": []})");
    EXPECT_EQ(metadata.dataType, "ci16_le");
    EXPECT_EQ(metadata.rateHz, 2.5e6);
    EXPECT_EQ(metadata.centreHz, 1090e6);
    EXPECT_EQ(metadata.startTime, 1'795'249'800'000'250U);
}

TEST_F(SigMf, OnlyTheDataTypeMustBeThere)
{
    const SigMfMetadata metadata = read(R"({"global": {"core:datatype": "cu8"}, "captures": [{}]})");
    EXPECT_EQ(metadata.dataType, "cu8");
    EXPECT_FALSE(metadata.rateHz || metadata.centreHz || metadata.startTime);
}

TEST_F(SigMf, TheProblemIsNamedWithTheFile)
{
    EXPECT_THAT(problem("{\"global\": "), AllOf(HasSubstr("x.sigmf-meta"), HasSubstr("not valid JSON")));
    EXPECT_THAT(problem(""), HasSubstr("not valid JSON"));
    EXPECT_THAT(problem("[]"), HasSubstr("no object \"global\""));
    EXPECT_THAT(problem(R"({"global": 5})"), HasSubstr("no object \"global\""));
    EXPECT_THAT(problem(R"({"global": {}, "captures": [{}]})"), HasSubstr("\"core:datatype\" is missing"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": 8}})"), HasSubstr("\"core:datatype\" must be a text"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8", "core:sample_rate": "fast"}})"),
                HasSubstr("\"core:sample_rate\" must be a number"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8", "core:sample_rate": 0}})"),
                HasSubstr("\"core:sample_rate\" must be greater than 0"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}})"), HasSubstr("no list \"captures\""));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": []})"), HasSubstr("no list \"captures\""));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": [7]})"), HasSubstr("must be an object"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": [{"core:datetime": "yesterday"}]})"),
                HasSubstr("\"core:datetime\" must be a time"));
}

TEST_F(SigMf, RecordingsThatAreLaidOutOtherwiseAreRefused)
{
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": [{}, {}]})"), HasSubstr("2 captures"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8", "core:num_channels": 2}, "captures": [{}]})"),
                HasSubstr("\"core:num_channels\" is 2, and only 1 is supported"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": [{"core:header_bytes": 16}]})"),
                HasSubstr("core:header_bytes"));
    EXPECT_THAT(problem(R"({"global": {"core:datatype": "cu8"}, "captures": [{"core:sample_start": 1}]})"),
                HasSubstr("\"core:sample_start\" is 1, and only 0 is supported"));
}

TEST_F(SigMf, AMissingFileIsNamed)
{
    EXPECT_THAT([this] { readSigMf(path()); }, testing::ThrowsMessage<std::runtime_error>(HasSubstr("x.sigmf-meta")));
}

}  // namespace
