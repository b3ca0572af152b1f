/// @file Reading standard input within limits.
#include "platform/standin/request_body.h"

#include "platform/environment.h"
#include "platform/standin/files.h"
#include "platform/standin/whole_number.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace standin {

namespace {

using appliance::Environment;

constexpr std::size_t kMaxForm = std::size_t{1024} * 1024;
constexpr std::size_t kMaxDiscarded = 8 * kMaxForm;
constexpr std::size_t kPiece = kMaxForm / 16; ///< of what is discarded
constexpr char kFormType[] = "application/x-www-form-urlencoded";

/// Returns whether the body is a form. Compares the media type, without its parameters,
/// case-insensitively.
bool IsForm(std::string const& contentType)
{
    std::string const type = contentType.substr(0, contentType.find_first_of("; \t"));
    return ::strcasecmp(type.c_str(), kFormType) == 0;
}

constexpr std::size_t kUnknownLength = std::numeric_limits<std::size_t>::max();

/// Returns the length of the body: kUnknownLength if it is chunked, none if what the web server
/// says is no length.
std::optional<std::size_t> BodyLength()
{
    std::string const announced = Environment("CONTENT_LENGTH");
    if (!announced.empty()) {
        auto const length = ParseWholeNumber<std::size_t>(announced);
        return length ? std::optional(std::min(*length, kUnknownLength - 1)) : std::nullopt;
    }
    return Environment("HTTP_TRANSFER_ENCODING").empty() ? 0 : kUnknownLength;
}

/// How much of the body ReadForm() has read. Standard input belongs to the process, as this does.
std::size_t readLength = 0;

} // namespace

std::optional<std::string> ReadForm()
{
    std::optional<std::size_t> const length = BodyLength();
    bool const isChunked = length == kUnknownLength;
    if (!length || (*length > kMaxForm && !isChunked)) {
        return std::nullopt;
    }
    std::string body;
    ReadText(STDIN_FILENO, body, isChunked ? kMaxForm + 1 : *length);
    readLength = body.size();
    bool const isComplete = isChunked ? readLength <= kMaxForm : readLength == *length;
    bool const isAccepted = isComplete && (body.empty() || IsForm(Environment("CONTENT_TYPE")));
    return isAccepted ? std::optional(body) : std::nullopt;
}

void DiscardRestOfBody()
{
    // To read on after the end of a body could mean to wait for ever (RFC 3875, 4.2).
    std::size_t const length = BodyLength().value_or(0);
    std::size_t left = std::min(length - std::min(length, readLength), kMaxDiscarded);
    std::string text = "-";
    while (left > 0 && !text.empty()) {
        text.clear();
        ReadText(STDIN_FILENO, text, std::min(left, kPiece));
        left -= text.size();
    }
}

} // namespace standin
