// Tests of files that are made byte by byte.
#pragma once

#include "support/recordingbytes.h"
#include "support/testing.h"

class MadeFileTest : public testing::Test {
protected:
    [[nodiscard]] std::string store(const std::string& bytes) const
    {
        const QString name = m_folder.filePath("made.rec");
        TestSupport::writeFile(name, bytes);
        return name.toStdString();
    }

private:
    QTemporaryDir m_folder;
};
