/// @file The answer: CGI headers (RFC 3875) and one line of JSON (RFC 8259) in ASCII.
#include "platform/standin/answer.h"

#include "platform/standin/ascii_json.h"
#include "platform/standin/block_writer.h"
#include "platform/standin/files.h"

#include <string>

namespace standin {

namespace {

constexpr char kHeaders[] = "Content-Type: application/json; charset=utf-8\r\n\r\n";

} // namespace

bool SendAnswer(int fd, Json::Value const& errors, Json::Value& response)
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
    BlockWriter out(fd);
    out.Put(kHeaders);
    WriteAsciiJson(out, answer);
    out.Put('\n');
    return out.Finish();
}

bool SendFailure(int fd, int code)
{
    std::string const text = std::string(kHeaders) +
                             "{\"error\":{\"code\":" + std::to_string(code) +
                             "},\"success\":false}\n";
    return WriteAll(fd, text);
}

} // namespace standin
