/// @file The request, read from the CGI environment (RFC 3875).
#include "kald/web_api.h"

#include "platform/environment.h"
#include "platform/standin/accounts.h"

#include <strings.h>
#include <unistd.h>
#include <uriparser/Uri.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace KALD {

namespace {

using appliance::Environment;

constexpr std::size_t kMaxBody = std::size_t{1024} * 1024;
constexpr char kFormType[] = "application/x-www-form-urlencoded";
constexpr char kAdministrators[] = "administrators";

/// Returns whether the body is a form. Compares the media type, without its parameters,
/// case-insensitively.
bool IsForm(std::string const& contentType)
{
    std::string const type = contentType.substr(0, contentType.find_first_of("; \t"));
    return ::strcasecmp(type.c_str(), kFormType) == 0;
}

/// Returns the announced length of the body; none if it is malformed or too long. RFC 3875 leaves
/// CONTENT_LENGTH empty or unset without a body.
std::optional<std::size_t> BodyLength()
{
    std::string const text = Environment("CONTENT_LENGTH");
    std::size_t length = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (text.empty()) {
        return 0;
    }
    if (error != std::errc() || end != text.data() + text.size() || length > kMaxBody) {
        return std::nullopt;
    }
    return length;
}

/// Reads exactly `length` bytes of standard input; none if there are fewer.
std::optional<std::string> ReadBody(std::size_t length)
{
    std::string body(length, '\0');
    std::size_t used = 0;
    while (used < length) {
        ssize_t const got = ::read(STDIN_FILENO, body.data() + used, length - used);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return std::nullopt;
        }
        used += static_cast<std::size_t>(got);
    }
    return body;
}

} // namespace

/// What is read from the environment once: the parameters and the login name.
class WebCGI::Request {
public:
    /// Adds the parameters of a form-encoded text. A key that is already there keeps its value.
    void AddParameters(std::string_view text)
    {
        UriQueryListA* list = nullptr;
        int count = 0;
        if (uriDissectQueryMallocExA(&list, &count, text.data(), text.data() + text.size(),
                                     URI_TRUE, URI_BR_DONT_TOUCH) != URI_SUCCESS) {
            return;
        }
        for (UriQueryListA const* item = list; item != nullptr; item = item->next) {
            m_parameters.try_emplace(item->key, item->value != nullptr ? item->value : "");
        }
        uriFreeQueryListA(list);
    }

    char const* Find(char const* name, char const* fallback) const
    {
        auto const found = m_parameters.find(name);
        return found != m_parameters.end() ? found->second.c_str() : fallback;
    }

    std::string m_login;

private:
    std::unordered_map<std::string, std::string> m_parameters;
};

WebCGI::WebCGI() : m_request(std::make_unique<Request>()) {}

WebCGI::~WebCGI() = default;

bool WebCGI::Read()
{
    m_request->m_login = Environment("REMOTE_USER");
    m_request->AddParameters(Environment("QUERY_STRING"));
    if (Environment("REQUEST_METHOD") == "POST" && !ReadForm()) {
        return false;
    }
    m_methodName = In("method", "");
    return true;
}

bool WebCGI::ReadForm()
{
    std::optional<std::size_t> const length = BodyLength();
    std::optional<std::string> const body = length ? ReadBody(*length) : std::nullopt;
    if (body && IsForm(Environment("CONTENT_TYPE"))) {
        m_request->AddParameters(*body);
    }
    return body.has_value();
}

char const* WebCGI::In(char const* name, char const* fallback)
{
    return m_request->Find(name, fallback);
}

std::string WebCGI::GetLoginUserName() const
{
    return m_request->m_login;
}

int WebCGI::IsAdmin() const
{
    return standin::IsMember(m_request->m_login, kAdministrators) ? 1 : 0;
}

} // namespace KALD
