/// @file Fuzz target: a whole request from any client, over stored files of any content. Whatever
/// they hold, one well-formed answer comes, and a stored document never becomes a broken one.
#include "fuzz/fuzz_target.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

extern "C" int fsync(int /*fd*/)
{
    return 0; // the inputs come by the thousand, and nothing of them is to outlive the machine
}

namespace {

constexpr char kHeaders[] = "Content-Type: application/json; charset=utf-8\r\n\r\n";
constexpr char const* kFiles[] = {kOneShot, kRepeat, kUserDefine, kFolders, kUsers};

struct RequestFuzz : Appliance {
    static void Answer(std::uint8_t const* data, std::size_t size)
    {
        [[maybe_unused]] static bool const laid = (Reset(), true);
        seams::now = 1751371200;
        std::vector<std::string> const texts = CutInput(data, size, 4 + std::size(kFiles));
        Request const request{texts[0], texts[1], texts[2], texts[3],
                              std::to_string(texts[3].size())};
        Remove(kCommands);
        for (std::size_t i = 0; i < std::size(kFiles); ++i) {
            Remove(kFiles[i]);
            if (std::string const& text = texts[4 + i]; !text.empty()) {
                Write(kFiles[i], text);
            }
        }
        Outcome const outcome = Run(request);
        Require(outcome.raw.starts_with(kHeaders) && outcome.body["success"].isBool());
        Require(outcome.raw.find('\n', sizeof kHeaders - 1) == outcome.raw.size() - 1);
        for (std::size_t i = 0; i < std::size(kFiles); ++i) {
            std::string const text = Read(kFiles[i]);
            Require(text == texts[4 + i] || text == "null\n" || !Parsed(text).isNull());
        }
    }
};

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    RequestFuzz::Answer(data, size);
    seams::Reset(); // what is kept from one input to the next makes the fuzzer look for leaks
    return 0;
}
