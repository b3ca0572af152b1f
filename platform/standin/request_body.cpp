/// @file Reading standard input within limits.
#include "platform/standin/request_body.h"

#include "platform/environment.h"
#include "platform/standin/files.h"
#include "platform/standin/whole_number.h"

#include <strings.h>
#include <unistd.h>

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

} // namespace

std::optional<std::string> ReadForm()
{
    std::string const announced = Environment("CONTENT_LENGTH");
    std::string body;
    if (!announced.empty()) {
        auto const length = ParseWholeNumber<std::size_t>(announced).value_or(kMaxForm + 1);
        if (length > kMaxForm) {
            return std::nullopt;
        }
        ReadText(STDIN_FILENO, body, length);
        if (body.size() < length) {
            return std::nullopt;
        }
    } else if (!Environment("HTTP_TRANSFER_ENCODING").empty()) {
        ReadText(STDIN_FILENO, body, kMaxForm + 1);
    }
    bool const isAccepted =
        body.size() <= kMaxForm && (body.empty() || IsForm(Environment("CONTENT_TYPE")));
    return isAccepted ? std::optional(body) : std::nullopt;
}

void DiscardRestOfBody()
{
    bool const hasBody =
        !Environment("CONTENT_LENGTH").empty() || !Environment("HTTP_TRANSFER_ENCODING").empty();
    std::string text;
    for (std::size_t left = hasBody ? kMaxDiscarded : 0; left > 0; left -= text.size()) {
        text.clear();
        ReadText(STDIN_FILENO, text, kPiece);
        if (text.size() < kPiece) {
            return;
        }
    }
}

} // namespace standin
