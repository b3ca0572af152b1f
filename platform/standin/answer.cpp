/// @file The answer: CGI headers (RFC 3875) and one line of JSON (RFC 8259) in ASCII.
#include "platform/standin/answer.h"

#include "platform/standin/ascii_json.h"

namespace standin {

namespace {

constexpr char kHeaders[] = "Content-Type: application/json; charset=utf-8\r\n\r\n";

} // namespace

std::string RenderAnswer(Json::Value const& errors, Json::Value& response)
{
    // Never destroyed: the process ends with the request, and to take the document of 11,000
    // schedules apart would cost an eighth of it.
    static Json::Value& answer = *new Json::Value;
    answer = Json::Value(Json::objectValue);
    answer["success"] = errors.empty();
    if (!errors.empty()) {
        answer["error"]["code"] = errors[0];
    }
    if (!response.isNull()) {
        answer["data"].swap(response);
    }
    std::string text = kHeaders;
    AppendAsciiJson(text, answer);
    text += '\n';
    return text;
}

std::string RenderFailure(int code)
{
    return std::string(kHeaders) + "{\"error\":{\"code\":" + std::to_string(code) +
           "},\"success\":false}\n";
}

} // namespace standin
