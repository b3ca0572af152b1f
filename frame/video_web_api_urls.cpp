/// @file URLs and number texts for the package's other API classes. They are in a file of their own
/// so that a program that does not use them is linked without the network code.
#include "frame/video_web_api.h"

#include "frame/decimal.h"
#include "network/host_port.h"
#include "platform/environment.h"

namespace Tremolane {

using appliance::Environment;

std::string VideoWebAPI::GetBasePath()
{
    std::string const uri = Environment("REQUEST_URI");
    return uri.substr(0, uri.find("/webapi"));
}

std::string VideoWebAPI::GetRequestUrl()
{
    std::string const host = Environment("HTTP_HOST");
    if (host.empty()) {
        return "";
    }
    bool const secure =
        host.ends_with(network_utils::kRelayDomain) || std::getenv("HTTPS") != nullptr;
    return (secure ? "https://" : "http://") + host + GetBasePath();
}

std::string VideoWebAPI::GetExternalUrl()
{
    std::string host = network_utils::GetExternalHost();
    if (network_utils::IsRelayHost(host)) {
        host.erase(host.find_last_not_of("\r\n") + 1); // RFC 3986 allows no line break in a URL
        return "https://" + host + "/direct" + GetBasePath();
    }
    std::string const port = network_utils::GetExternalPort();
    return (network_utils::IsHttps() ? "https://" : "http://") + host +
           (port.empty() ? "" : ":" + port) + GetBasePath();
}

std::string VideoWebAPI::GetIntParamText(std::string const& name)
{
    char const* const text = m_request.In(name.c_str(), nullptr);
    return text != nullptr ? std::to_string(ParseNumberPrefix(text)) : "";
}

} // namespace Tremolane
