/// @file The URLs and the number texts that the package's other API classes ask for. They stand
/// apart so that a program which asks for none carries nothing of what finds the address.
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
