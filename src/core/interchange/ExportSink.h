#pragma once
#include "core/interchange/GridExport.h"

#include <QIODevice>
#include <string>

// Buffered output of an export: collects bytes in a large block, writes it to the device when
// full, and between rows publishes the progress and honours Cancel.
class ExportSink
{
public:
    ExportSink(QIODevice &out, ExportProgress *progress) : m_out(out), m_progress(progress)
    {
        m_buffer.reserve(BlockSize + 4096);
    }

    std::string &buffer() { return m_buffer; }

    // Called after each row; row is the number of rows written so far.
    void rowDone(qint64 rows)
    {
        if (m_buffer.size() >= BlockSize)
            flush();
        if (!m_progress)
            return;
        if ((rows & 1023) == 0)
            m_progress->rowsDone.store(rows, std::memory_order_relaxed);
        if (m_progress->cancel.load(std::memory_order_relaxed))
            throw ExportCancelled();
    }

    void flush()
    {
        if (m_buffer.empty())
            return;
        if (m_out.write(m_buffer.data(), qint64(m_buffer.size())) != qint64(m_buffer.size()))
            throw VantryError(QStringLiteral("Cannot write the export file: %1").arg(m_out.errorString()));
        m_buffer.clear();
    }

    void finish(qint64 rows)
    {
        flush();
        if (m_progress)
            m_progress->rowsDone.store(rows);
    }

private:
    static constexpr size_t BlockSize = 1 << 20;
    QIODevice &m_out;
    ExportProgress *m_progress;
    std::string m_buffer;
};
