#pragma once
// The Oracle access path, through the Oracle Call Interface of an installed Oracle Instant Client.
//
// Opening loads the client library first; without it the error says that the client is not
// installed and how to install it. Logging on through the client is not part of this build yet:
// with a client present the error says so instead.

#include "core/connections/DatabaseSession.h"

class OracleSession : public DatabaseSession
{
public:
    void open(const TReaderConnection &record) override;
    void close() override;
    bool isOpen() const override { return m_loggedOn; }
    QSqlDatabase database() const override;

    // The table list query of an Oracle session: the user's own tables and views, each as owner
    // "." name, the name in double quotes when it holds a blank.
    static QString tableListQuery();

private:
    bool m_loggedOn = false;
};
