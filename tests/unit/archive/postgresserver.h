// A PostgreSQL cluster of a test's own, reached through a socket in a temporary folder.
#pragma once

#include "support/testing.h"

namespace ArchiveTests {

class PostgresServer {
public:
    /// What is missing for one here, empty when nothing is: the text of a skipped test.
    [[nodiscard]] static QString missing();

    /// @param password of the user "archive"; empty: everybody is let in
    explicit PostgresServer(const QString& password = {});
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;
    ~PostgresServer();

    [[nodiscard]] bool start();
    void stop();
    [[nodiscard]] QString registry() const;
    /// What went wrong last.
    [[nodiscard]] const QString& output() const { return m_output; }

private:
    bool run(const QString& program, const QStringList& arguments);

    QTemporaryDir m_folder;
    QString m_output;
    bool m_made = false;
};

}  // namespace ArchiveTests
