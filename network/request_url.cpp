/// @file Building URLs from host, port and path.
#include "network/request_url.h"

#include "network/host_port.h"
#include "platform/environment.h"

#include <cstdlib>

namespace Tremolane::network_utils {

namespace {

using appliance::Environment;

} // namespace

std::string GetBasePath()
{
    std::string const uri = Environment("REQUEST_URI");
    return uri.substr(0, uri.find("/webapi"));
}

std::string GetRequestUrl()
{
    std::string const host = Environment("HTTP_HOST");
    if (host.empty()) {
        return "";
    }
    bool const secure = host.ends_with(kRelayDomain) || std::getenv("HTTPS") != nullptr;
    return (secure ? "https://" : "http://") + host + GetBasePath();
}

std::string GetExternalUrl()
{
    std::string host = GetExternalHost();
    if (IsRelayHost(host)) {
        host.erase(host.find_last_not_of("\r\n") + 1); // RFC 3986 allows no line break in a URL
        return "https://" + host + "/direct" + GetBasePath();
    }
    std::string const port = GetExternalPort();
    return (IsHttps() ? "https://" : "http://") + host + (port.empty() ? "" : ":" + port) +
           GetBasePath();
}

} // namespace Tremolane::network_utils
