#include "system/syslog_socket.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <paths.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <ctime>

namespace tkv {

namespace {

constexpr std::string_view kSystemPath = _PATH_LOG;

// The C library's syslog() blocks while the socket is full.
Descriptor connectedTo(std::string_view path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) return Descriptor(-1);
    path.copy(address.sun_path, path.size());
    Descriptor connection(socket(AF_UNIX, SOCK_DGRAM, 0));
    if (connection.number() < 0) return connection;
    fcntl(connection.number(), F_SETFD, FD_CLOEXEC);
    fcntl(connection.number(), F_SETFL, O_NONBLOCK);
    if (connect(connection.number(), reinterpret_cast<const sockaddr*>(&address),
                sizeof(address)) != 0) {
        connection.close();
    }
    return connection;
}

}  // namespace

SyslogSocket::SyslogSocket(const std::string& path)
    : connection_(connectedTo(path.empty() ? kSystemPath : std::string_view(path))) {}

void SyslogSocket::send(std::string_view program, std::string_view text) const {
    if (connection_.number() < 0) return;
    std::tm local{};
    const std::time_t now = std::time(nullptr);
    localtime_r(&now, &local);
    // The format of RFC 3164; the daemon adds the host name.
    const std::string entry =
        fmt::format("<{}>{:%b %e %H:%M:%S} {}: {}", LOG_USER | LOG_NOTICE, local, program, text);
    // No SIGPIPE when the daemon is gone: it is not raised for datagram sockets.
    static_cast<void>(::send(connection_.number(), entry.data(), entry.size(), 0));
}

}  // namespace tkv
