/// @file The life of a request: read, authorise, process, answer.
#include "kald/web_api.h"

#include "platform/standin/accounts.h"
#include "platform/standin/answer.h"
#include "platform/standin/transaction.h"

#include <fcntl.h>
#include <strings.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <string>

namespace KALD {

namespace {

constexpr int kAuthorized = 1;
constexpr int kNoLogin = -1;
constexpr int kLocked = -3;

constexpr int kErrorFailed = 100;
constexpr int kErrorBadRequest = 101;

/// Whether a method only reads. Every other one may change stored files, an unknown one included.
bool IsReading(char const* method)
{
    constexpr char kInfo[] = "getinfo_";
    return ::strcasecmp(method, "list") == 0 || ::strncasecmp(method, kInfo, sizeof kInfo - 1) == 0;
}

/// Opens /dev/null on those of the descriptors 0 to 2 that are closed, so that no stored file is
/// opened on one of them and takes what is meant for standard output or error.
void OpenStandardDescriptors()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (::fcntl(fd, F_GETFD) < 0) {
            ::open("/dev/null", O_RDWR); // the lowest free descriptor, which is this one
        }
    }
}

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

void WebAPI::RunRequest()
{
    if (!m_request.Read()) {
        SetError(kErrorBadRequest);
        return;
    }
    if (CheckAuthorized() != 0) {
        RunProcess();
    }
}

void WebAPI::RunProcess()
{
    if (IsReading(m_request.m_methodName)) {
        Process();
        return;
    }
    standin::Transaction transaction;
    if (!transaction.Begin()) {
        SetError(kErrorFailed);
        return;
    }
    try {
        Process();
    } catch (...) { // out of memory, most likely: to end in the middle of a change is no end
        transaction.RollBack();
        throw;
    }
    if (!transaction.Commit()) {
        SetError(kErrorFailed);
    }
}

bool WebAPI::RunGuarded()
{
    try {
        RunRequest();
    } catch (std::exception const& error) {
        ::syslog(LOG_ERR, "request failed: %s", error.what());
        SetError(kErrorFailed);
    }
    return standin::SendAnswer(STDOUT_FILENO, m_errors, m_response);
}

void WebAPI::Run()
{
    OpenStandardDescriptors();
    // Who reads the answer or the log may be gone, and a disk quota may end a save: all of them are
    // failed calls here and no reason to die in the middle of a change.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    ::openlog(nullptr, LOG_PID | LOG_PERROR, LOG_USER); // the web server logs what a CGI says there
    bool isSent = false;
    try {
        isSent = RunGuarded();
    } catch (std::exception const& error) { // out of memory, most likely
        ::syslog(LOG_ERR, "failed to render the answer: %s", error.what());
        isSent = standin::SendFailure(STDOUT_FILENO, kErrorFailed);
    }
    if (!isSent) {
        ::syslog(LOG_ERR, "failed to send the answer: %s", std::strerror(errno));
    }
}

} // namespace KALD
