/// @file Parsing network locations, and choosing the external host and port.
#include "network/host_port.h"

#include "kald/libc.h"
#include "network/probes.h"
#include "platform/appliance_paths.h"
#include "platform/environment.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace Tremolane::network_utils {

namespace {

using appliance::Environment;

/// The greatest length of a host and of a port; the rest is cut off.
constexpr std::size_t kMaxPart = 4095;

/// Buffer sizes for the values of settings, including the NUL.
constexpr std::size_t kPortSize = 16;
constexpr std::size_t kHostSize = 4096;

/// Returns the position at which the host of a network location ends.
std::size_t EndOfHost(std::string_view text)
{
    if (!text.starts_with('[')) {
        return std::min(text.find_first_of(":/"), text.size());
    }
    std::size_t const bracket = text.find(']');
    return bracket != std::string_view::npos ? bracket + 1 : text.size();
}

/// Returns a value of the appliance's settings, cut to `size` - 1 characters. Returns empty text if
/// the key is missing.
std::string ReadSetting(char const* key, std::size_t size)
{
    std::string buffer(size, '\0');
    int const length = KDLIBCFileGetKeyValue(appliance::kSettingsFile, key, buffer.data(), size, 0);
    return length > 0 ? buffer.c_str() : "";
}

} // namespace

HostAndPort SplitHostPort(char const* text)
{
    HostAndPort parts;
    if (text == nullptr) {
        return parts;
    }
    std::string_view rest = text;
    std::size_t const end = EndOfHost(rest);
    parts.host = rest.substr(0, std::min(end, kMaxPart));
    rest.remove_prefix(end); // the port follows the uncut host
    if (rest.starts_with(':')) {
        rest.remove_prefix(1);
        parts.port = rest.substr(0, std::min(rest.find('/'), kMaxPart));
    }
    return parts;
}

bool IsRelayHost(std::string host)
{
    std::string relayName;
    if (!GetRelayName(relayName) || host.find(kRelayDomain) == std::string::npos) {
        return false;
    }
    host.erase(std::min(host.find('.'), host.size()));
    return host == relayName.substr(0, relayName.find('.'));
}

bool IsHttps()
{
    return ::strcasecmp(Environment("HTTPS").c_str(), "on") == 0;
}

std::string GetExternalPort()
{
    HostAndPort const request = SplitHostPort(std::getenv("HTTP_HOST"));
    if (IsRelayHost(request.host)) {
        return request.port;
    }
    std::string port =
        ReadSetting(IsHttps() ? "external_port_zem_https" : "external_port_zem_http", kPortSize);
    if (port.empty()) {
        port = Environment("SERVER_PORT");
    }
    return port.empty() ? request.port : port;
}

std::string GetExternalHost()
{
    HostAndPort const request = SplitHostPort(std::getenv("HTTP_HOST"));
    if (IsRelayHost(request.host)) {
        return request.host;
    }
    std::string host = ReadSetting("external_host_ip", kHostSize);
    if (!host.empty() || GetDdnsHostName(host) || GetRelayName(host)) {
        return host;
    }
    return request.host;
}

} // namespace Tremolane::network_utils
