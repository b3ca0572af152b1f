/// @file The life of a request: read, authorise, process, answer.
#include "kald/web_api.h"

#include "platform/standin/accounts.h"
#include "platform/standin/answer.h"
#include "platform/standin/files.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>

namespace KALD {

namespace {

constexpr int kAuthorized = 1;
constexpr int kNoLogin = -1;
constexpr int kLocked = -3;

constexpr int kErrorFailed = 100;
constexpr int kErrorBadRequest = 101;

} // namespace

WebAPI::WebAPI(char const* /*apiFile*/, char const* /*group*/) {}

WebAPI::~WebAPI() = default;

int WebAPI::CheckAuthorized()
{
    std::string const login = m_request.GetLoginUserName();
    if (login.empty()) {
        return kNoLogin;
    }
    return standin::IsLocked(login) ? kLocked : kAuthorized;
}

int WebAPI::CheckSharingPermission()
{
    return 0;
}

int WebAPI::CheckSharingAppPermission()
{
    return 0;
}

int WebAPI::HandleUploadFile()
{
    return 0;
}

void WebAPI::SetResponse(Json::Value& response)
{
    m_response.swap(response);
}

void WebAPI::SetError(int code)
{
    m_errors.append(code);
}

void WebAPI::RunGuarded()
{
    if (!m_request.Read()) {
        SetError(kErrorBadRequest);
        return;
    }
    if (CheckAuthorized() != 0) {
        Process();
    }
}

void WebAPI::Run()
{
    ::openlog(nullptr, LOG_PID | LOG_PERROR, LOG_USER); // the web server logs what a CGI says there
    try {
        RunGuarded();
    } catch (std::exception const& error) {
        ::syslog(LOG_ERR, "request failed: %s", error.what());
        SetError(kErrorFailed);
    }
    if (!standin::WriteAll(STDOUT_FILENO, standin::RenderAnswer(m_errors, m_response))) {
        ::syslog(LOG_ERR, "failed to send the answer: %s", std::strerror(errno));
    }
}

} // namespace KALD
