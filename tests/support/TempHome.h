#pragma once
#include <QTemporaryDir>
#include <QtTest>

// A fresh data folder for one test: $VANTRY_HOME points at a temporary directory that is removed
// afterwards, so no test touches the user's own catalogue or settings.
class TempHome
{
public:
    TempHome()
    {
        QVERIFY2(m_dir.isValid(), "cannot create a temporary data folder");
        qputenv("VANTRY_HOME", m_dir.path().toUtf8());
    }
    ~TempHome() { qunsetenv("VANTRY_HOME"); }

    QString path() const { return m_dir.path(); }
    QString file(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
};
