/// @file The request, read from the CGI environment (RFC 3875).
#include "kald/web_api.h"

#include "platform/environment.h"
#include "platform/standin/accounts.h"
#include "platform/standin/request_body.h"

#include <uriparser/Uri.h>

#include <string_view>

namespace KALD {

namespace {

using appliance::Environment;

constexpr char kAdministrators[] = "administrators";
constexpr int kMaxParameters = 1000; ///< of a query or a form; no client has a use for more

/// Adds the parameters of a form-encoded text. A key that is already there keeps its value. Returns
/// false if they could not be read or are too many: to run with some of them is worse than not at
/// all.
bool AddParameters(std::map<std::string, std::string>& parameters, std::string_view text)
{
    UriQueryListA* list = nullptr;
    int count = 0;
    if (uriDissectQueryMallocExA(&list, &count, text.data(), text.data() + text.size(), URI_TRUE,
                                 URI_BR_DONT_TOUCH) != URI_SUCCESS) {
        return false;
    }
    for (UriQueryListA const* item = list; item != nullptr; item = item->next) {
        parameters.try_emplace(item->key, item->value != nullptr ? item->value : "");
    }
    uriFreeQueryListA(list);
    return count <= kMaxParameters;
}

} // namespace

bool WebCGI::Read()
{
    m_login = Environment("REMOTE_USER");
    bool isRead = AddParameters(m_parameters, Environment("QUERY_STRING"));
    if (Environment("REQUEST_METHOD") == "POST") {
        auto const form = standin::ReadForm();
        isRead = isRead && form && AddParameters(m_parameters, *form);
    }
    m_methodName = isRead ? In("method", "") : "";
    return isRead;
}

char const* WebCGI::In(char const* name, char const* fallback)
{
    auto const found = m_parameters.find(name);
    return found != m_parameters.end() ? found->second.c_str() : fallback;
}

std::string WebCGI::GetLoginUserName() const
{
    return m_login;
}

int WebCGI::IsAdmin() const
{
    return standin::IsMember(m_login, kAdministrators) ? 1 : 0;
}

} // namespace KALD
