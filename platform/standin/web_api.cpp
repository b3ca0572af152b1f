/// @file The life of a request: read, authorise, process, answer.
#include "kald/web_api.h"

#include "platform/environment.h"
#include "platform/standin/accounts.h"
#include "platform/standin/answer.h"
#include "platform/standin/request_body.h"
#include "platform/standin/same_origin.h"
#include "platform/standin/transaction.h"
#include "platform/standin/userdefine_index.h"

#include <fcntl.h>
#include <strings.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <iterator>
#include <string>

namespace KALD {

namespace {

constexpr int kAuthorized = 1;
constexpr int kRefused = 0;
constexpr int kNoLogin = -1;
constexpr int kLocked = -3;

constexpr int kErrorFailed = 100;
constexpr int kErrorBadRequest = 101;

/// What a method does to stored files.
enum class Effect {
    kReads,          ///< changes none; takes no lock, and HEAD may ask for it
    kSavesOnce,      ///< saves one file at most, once, which needs no journal
    kSavesForEachId, ///< the same for each id of a list
    kChanges,        ///< changes what it likes
};

struct MethodEffect {
    char const* method;
    Effect effect;
};

/// The methods that promise less than kChanges, which every other one may do, an unknown one
/// included. A transaction holds a method to its promise.
constexpr MethodEffect kEffects[] = {
    {"list", Effect::kReads},
    {"create", Effect::kSavesForEachId},
    {"delete", Effect::kSavesOnce},
    {"delete_passed", Effect::kSavesOnce},
    {"create_repeat", Effect::kSavesOnce},
    {"edit_repeat", Effect::kSavesOnce},
    {"delete_repeat", Effect::kSavesOnce},
    {"getinfo_repeat", Effect::kReads},
    {"getinfo_userdefine", Effect::kReads},
};

Effect EffectOf(char const* method)
{
    auto const* const found = std::ranges::find_if(kEffects, [method](MethodEffect const& entry) {
        return ::strcasecmp(method, entry.method) == 0;
    });
    return found != std::end(kEffects) ? found->effect : Effect::kChanges;
}

bool IsReading(char const* method)
{
    return EffectOf(method) == Effect::kReads;
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

void WebAPI::RunProcess()
{
    Effect const effect = EffectOf(m_request.m_methodName);
    if (effect == Effect::kReads) {
        Process();
        return;
    }
    bool const isList = std::strchr(m_request.In("id", ""), ',') != nullptr;
    bool const savesOnce =
        effect == Effect::kSavesOnce || (effect == Effect::kSavesForEachId && !isList);
    standin::Transaction transaction(savesOnce);
    if (!transaction.Begin()) {
        SetError(kErrorFailed);
        return;
    }
    try {
        Process();
        if (!transaction.Commit()) {
            SetError(kErrorFailed);
        }
    } catch (...) { // out of memory, most likely: to end in the middle of a change is no end
        transaction.RollBack();
        throw;
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
        } else if (CheckAuthorized() != 0) {
            RunProcess();
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
    standin::ForgetUserDefineIndex();
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
