/// @file The answer: CGI headers (RFC 3875) and one line of JSON (RFC 8259) in ASCII.
#include "platform/standin/answer.h"

#include "platform/standin/files.h"
#include "platform/standin/json_writer.h"

#include <string>

namespace standin {

namespace {

constexpr char kHeaders[] = "Content-Type: application/json; charset=utf-8\r\n"
                            "Cache-Control: no-store\r\n\r\n";

} // namespace

bool SendAnswer(int fd, Json::Value const& errors, Json::Value& response, bool hasBody)
{
    if (!hasBody) {
        return WriteAll(fd, kHeaders);
    }
    // Never destroyed: the process ends with the request, and destroying the document of 11,000
    // schedules would take an eighth of its time.
    static Json::Value& answer = *new Json::Value;
    answer = Json::Value(Json::objectValue);
    answer["success"] = errors.empty();
    if (!errors.empty()) {
        answer["error"]["code"] = errors[0];
    }
    if (!response.isNull()) {
        answer["data"].swap(response);
    }
    return WriteAll(fd, kHeaders + RenderJson(answer, Charset::kAscii) + '\n');
}

bool SendMethodNotAllowed(int fd, char const* allowed)
{
    return WriteAll(fd, std::string("Status: 405 Method Not Allowed\r\nAllow: ") + allowed +
                            "\r\nCache-Control: no-store\r\n\r\n");
}

bool SendFailure(int fd, int code)
{
    std::string const body =
        R"({"error":{"code":)" + std::to_string(code) + R"(},"success":false})";
    return WriteAll(fd, kHeaders + body + '\n');
}

} // namespace standin
