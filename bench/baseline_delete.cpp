/// @file The baseline for `delete_repeat`. With jsoncpp alone it reads the repeat file, removes the
/// records with one start and saves the file as durably as the program does. The argument is the
/// start in epoch seconds.
#include "bench/load_document.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"

#include <fcntl.h>
#include <json/writer.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int /*count*/, char** arguments)
{
    using namespace appliance;
    int const start = std::atoi(arguments[1]);
    std::string const path = RepeatFile(0);
    Json::Value records = LoadDocument(path);
    Json::Value kept(Json::arrayValue);
    for (Json::Value& record : records) {
        if (record[member::kStartTime].asInt() != start) {
            kept.append(std::move(record));
        }
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    std::string const out = Json::writeString(builder, kept);
    std::string const temporary = path + ".tmp";
    int const fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    bool const isSaved = ::write(fd, out.data(), out.size()) > 0 && ::fsync(fd) == 0 &&
                         std::rename(temporary.c_str(), path.c_str()) == 0;
    int const folder = ::open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY);
    return isSaved && ::fsync(folder) == 0 ? 0 : 1;
}
