#pragma once
// Checks that a server's TCP port accepts connections, within a time limit. Used before opening
// a driver whose client has no connect time-out of its own, so an unreachable host fails in
// bounded time instead of after the client's own minutes-long wait.

#include <QString>

namespace TcpProbe {

// Throws VantryError naming host, port and the cause when no connection is accepted within
// timeoutSeconds (an unknown host, a refused port, or no answer in time).
void requireReachable(const QString &host, int port, int timeoutSeconds);

} // namespace TcpProbe
