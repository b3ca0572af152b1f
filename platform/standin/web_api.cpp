/// @file The life of a request: read, authorise, process, answer.
#include "kald/web_api.h"

#include "platform/environment.h"
#include "platform/standin/accounts.h"
#include "platform/standin/answer.h"
#include "platform/standin/files.h"
#include "platform/standin/request_body.h"
#include "platform/standin/same_origin.h"
#include "platform/standin/transaction.h"

#include <fcntl.h>
#include <strings.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <string>

namespace KALD {

namespace {

constexpr int kAuthorized = 1;
constexpr int kRefused = 0;
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

/// Returns whether a method replaces one stored file at most, once. A `create` does so for one
/// channel, but not for a list of them.
bool SavesOnce(char const* method, bool isList)
{
    if (::strcasecmp(method, "create") == 0) {
        return !isList;
    }
    constexpr char const* kMethods[] = {"delete", "delete_passed", "create_repeat", "edit_repeat",
                                        "delete_repeat"};
    return std::ranges::any_of(
        kMethods, [method](char const* name) { return ::strcasecmp(method, name) == 0; });
}

/// Returns null if the HTTP method may be used for an API method, otherwise the list of those that
/// may. A HEAD request must not change anything (RFC 9110). A program that is started without a web
/// server has no HTTP method.
char const* AllowedInsteadOf(std::string const& httpMethod, char const* method)
{
    if (httpMethod.empty() || httpMethod == "GET" || httpMethod == "POST" ||
        (httpMethod == "HEAD" && IsReading(method))) {
        return nullptr;
    }
    return IsReading(method) ? "GET, HEAD, POST" : "GET, POST";
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
    if (standin::IsLocked(login)) {
        return kLocked;
    }
    if (!IsReading(m_request.m_methodName) && standin::IsForeignRequest()) {
        ::syslog(LOG_WARNING, "refused a change that a page of another site or origin has sent");
        return kRefused;
    }
    return kAuthorized;
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
    bool const isList = std::strchr(m_request.In("id", ""), ',') != nullptr;
    standin::Transaction transaction(SavesOnce(m_request.m_methodName, isList));
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
    std::string const httpMethod = appliance::Environment("REQUEST_METHOD");
    bool const isHead = httpMethod == "HEAD";
    try {
        if (!m_request.Read()) {
            SetError(kErrorBadRequest);
        } else if (char const* const allowed =
                       AllowedInsteadOf(httpMethod, m_request.m_methodName)) {
            return standin::SendMethodNotAllowed(STDOUT_FILENO, allowed);
        } else {
            RunRequest();
        }
    } catch (std::exception const& error) {
        ::syslog(LOG_ERR, "request failed: %s", error.what());
        SetError(kErrorFailed);
    }
    return standin::SendAnswer(STDOUT_FILENO, m_errors, m_response, !isHead);
}

void WebAPI::Run()
{
    OpenStandardDescriptors();
    standin::StartFileGeneration();
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
    standin::DiscardRestOfBody();
}

} // namespace KALD
