/// @file The Web API framework's classes: one request, and the object that answers it.
#pragma once

#include <json/value.h>

#include <memory>
#include <string>

namespace KALD {

/// The request as the framework has read it: its parameters, its method name and its login.
class WebCGI {
public:
    WebCGI();
    ~WebCGI();
    WebCGI(WebCGI const&) = delete;
    WebCGI& operator=(WebCGI const&) = delete;

    /// The text of the parameter `name`, or `fallback` if the request does not carry it; a null
    /// fallback therefore tells absence from empty text. Owned by the request, valid until it ends.
    char const* In(char const* name, char const* fallback);

    /// The name under which the web server has authenticated the client; empty without a login.
    std::string GetLoginUserName() const;

    /// Non-zero if the login user is an administrator of the appliance.
    int IsAdmin() const;

    /// The method name as the client sent it, NUL-terminated, never null. Read, never written.
    char const* m_methodName = "";

private:
    friend class WebAPI;
    class Request;

    /// Reads the request from the CGI environment; false if it is malformed.
    bool Read();

    /// Adds the parameters of a form in the body of a POST; false if the body is malformed.
    bool ReadForm();

    std::unique_ptr<Request> m_request;
};

/// Base of every Web API class: runs one request and answers it with what was recorded.
class WebAPI {
public:
    /// `apiFile` names the API's description, `group` the package it belongs to.
    WebAPI(char const* apiFile, char const* group);
    virtual ~WebAPI();
    WebAPI(WebAPI const&) = delete;
    WebAPI& operator=(WebAPI const&) = delete;

    /// The request handler.
    virtual void Process() = 0;

    /// Above 0: authorised. -1: no login. -3: the account is locked. Any other value: refused.
    virtual int CheckAuthorized();

    // Not called here; they hold their places in the table of virtual functions.
    virtual int CheckSharingPermission();
    virtual int CheckSharingAppPermission();
    virtual int HandleUploadFile();

    /// Records the response data. The content of `response` is moved out of it.
    virtual void SetResponse(Json::Value& response);

    /// Reads the request, asks CheckAuthorized(), then Process() if that gave non-zero, and answers
    /// with what was recorded; nothing recorded is a plain success.
    void Run();

    /// Records an error code. Of several codes the first one is answered: it is the cause.
    void SetError(int code);

protected:
    WebCGI m_request;
    Json::Value m_errors;   ///< every recorded code, in order; null if none
    Json::Value m_response; ///< the recorded response data; null if none

private:
    /// Reads, authorises, processes.
    void RunRequest();

    /// Calls Process(), for a changing method with the exclusive right to change stored files.
    void RunProcess();

    /// Runs the request and answers it. An exception that leaves it is recorded as an error.
    /// Returns whether the answer was sent.
    bool RunGuarded();
};

} // namespace KALD
