#include "core/workspace/ConnectionList.h"

#include "core/app/MdmUn.h"
#include "core/base/VantryError.h"

ConnectionList::ConnectionList(TMdm *catalogue, QObject *parent)
    : QObject(parent), m_catalogue(catalogue)
{
    reopen();
}

void ConnectionList::reopen()
{
    if (m_state != State::Browse)
        cancel();
    const qint64 bookmark = current() ? current()->connectionId : 0;
    m_rows = m_catalogue->connections();
    m_current = m_rows.isEmpty() ? -1 : 0;
    for (int i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].connectionId == bookmark)
            m_current = i;
    }
    emit reset();
    emit currentChanged(m_current);
}

const ConnectionRow *ConnectionList::current() const
{
    return m_current >= 0 && m_current < m_rows.size() ? &m_rows[m_current] : nullptr;
}

void ConnectionList::setCurrentIndex(int index)
{
    if (index == m_current || index < 0 || index >= m_rows.size())
        return;
    if (m_state != State::Browse)
        post();
    m_current = index;
    emit currentChanged(m_current);
}

ConnectionRow &ConnectionList::insertRow()
{
    if (m_state != State::Browse)
        post();
    ConnectionRow row;
    stampCreated(row.stamps);
    m_rows.append(row);
    m_current = int(m_rows.size()) - 1;
    m_state = State::Insert;
    emit reset();
    emit currentChanged(m_current);
    return m_rows[m_current];
}

ConnectionRow &ConnectionList::editCurrent()
{
    if (!current())
        throw VantryError(QStringLiteral("There is no connection to edit."));
    if (m_state == State::Browse) {
        m_beforeEdit = m_rows[m_current];
        m_state = State::Edit;
    }
    return m_rows[m_current];
}

void ConnectionList::post()
{
    if (m_state == State::Browse)
        return;
    ConnectionRow &row = m_rows[m_current];
    stampChanged(row.stamps);
    m_catalogue->postConnection(row);
    m_state = State::Browse;
    m_beforeEdit.reset();
    emit rowChanged(m_current);
}

void ConnectionList::cancel()
{
    if (m_state == State::Insert) {
        m_rows.removeAt(m_current);
        m_current = m_rows.isEmpty() ? -1 : qMin(m_current, int(m_rows.size()) - 1);
        m_state = State::Browse;
        emit reset();
        emit currentChanged(m_current);
    } else if (m_state == State::Edit) {
        m_rows[m_current] = *m_beforeEdit;
        m_beforeEdit.reset();
        m_state = State::Browse;
        emit rowChanged(m_current);
    }
}

void ConnectionList::deleteCurrent()
{
    if (m_state != State::Browse)
        cancel();
    const ConnectionRow *row = current();
    if (!row)
        return;
    m_catalogue->deleteConnection(row->connectionId);
    m_rows.removeAt(m_current);
    if (m_current >= m_rows.size())
        m_current = int(m_rows.size()) - 1;
    emit reset();
    emit currentChanged(m_current);
}
