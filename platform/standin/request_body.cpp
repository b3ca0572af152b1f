/// @file Reading standard input within limits.
#include "platform/standin/request_body.h"

#include "platform/environment.h"
#include "platform/standin/whole_number.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace standin {

namespace {

using appliance::Environment;

constexpr std::size_t kMaxForm = std::size_t{1024} * 1024;
constexpr std::size_t kMaxDiscarded = 8 * kMaxForm;
constexpr char kFormType[] = "application/x-www-form-urlencoded";

/// Returns whether the body is a form. Compares the media type, without its parameters,
/// case-insensitively.
bool IsForm(std::string const& contentType)
{
    std::string const type = contentType.substr(0, contentType.find_first_of("; \t"));
    return ::strcasecmp(type.c_str(), kFormType) == 0;
}

/// Reads up to `length` bytes of standard input: fewer only at its end or on an error.
std::string ReadInput(std::size_t length)
{
    constexpr std::size_t kStep = std::size_t{64} * 1024;
    std::string text;
    while (text.size() < length) {
        std::size_t const used = text.size();
        text.resize(std::min(length, used + kStep));
        ssize_t const got = ::read(STDIN_FILENO, text.data() + used, text.size() - used);
        text.resize(used + static_cast<std::size_t>(std::max(got, ssize_t{0})));
        if (got == 0 || (got < 0 && errno != EINTR)) {
            break;
        }
    }
    return text;
}

} // namespace

std::optional<std::string> ReadForm()
{
    std::string const announced = Environment("CONTENT_LENGTH");
    std::string body;
    if (!announced.empty()) {
        auto const length = ParseWholeNumber<std::size_t>(announced);
        if (!length || *length > kMaxForm) {
            return std::nullopt;
        }
        body = ReadInput(*length);
        if (body.size() < *length) {
            return std::nullopt;
        }
    } else if (!Environment("HTTP_TRANSFER_ENCODING").empty()) {
        body = ReadInput(kMaxForm + 1);
    }
    bool const isAccepted =
        body.size() <= kMaxForm && (body.empty() || IsForm(Environment("CONTENT_TYPE")));
    return isAccepted ? std::optional(body) : std::nullopt;
}

void DiscardRestOfBody()
{
    bool const hasBody =
        !Environment("CONTENT_LENGTH").empty() || !Environment("HTTP_TRANSFER_ENCODING").empty();
    std::size_t discarded = 0;
    for (std::string text = "-"; hasBody && !text.empty() && discarded < kMaxDiscarded;) {
        text = ReadInput(kMaxForm);
        discarded += text.size();
    }
}

} // namespace standin
