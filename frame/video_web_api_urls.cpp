/// @file URLs and number texts for the package's other API classes. They are in a file of their own
/// so that a program that does not use them is linked without the network code.
#include "frame/video_web_api.h"

#include "network/request_url.h"

#include <cstdlib>

namespace Tremolane {

std::string VideoWebAPI::GetBasePath()
{
    return network_utils::GetBasePath();
}

std::string VideoWebAPI::GetRequestUrl()
{
    return network_utils::GetRequestUrl();
}

std::string VideoWebAPI::GetExternalUrl()
{
    return network_utils::GetExternalUrl();
}

std::string VideoWebAPI::GetIntParamText(std::string const& name)
{
    char const* const text = m_request.In(name.c_str(), nullptr);
    return text != nullptr ? std::to_string(std::strtoll(text, nullptr, 10)) : "";
}

} // namespace Tremolane
