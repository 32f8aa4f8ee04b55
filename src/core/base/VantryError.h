#pragma once
#include <QString>
#include <stdexcept>

// The one exception type of the core. Its message is what the user reads, so it names the cause.
class VantryError : public std::runtime_error
{
public:
    explicit VantryError(const QString &message)
        : std::runtime_error(message.toStdString()), m_message(message)
    {
    }
    QString message() const { return m_message; }

private:
    QString m_message;
};
