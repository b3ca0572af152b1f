/// @file The appliance's files, and a request in this process.
#pragma once

#include "platform/appliance_paths.h"

#include <string>

namespace fuzz {

/// A CGI request; its method is POST if it has a body.
struct Request {
    std::string query, user, method, body;
};

/// Lays out a fresh tree with accounts and a recording folder.
void LayAppliance();

/// Replaces a file of the appliance; empty text removes it.
void Put(std::string const& path, std::string const& text);

std::string ContentOf(std::string const& path);

/// Runs a request; returns all that the program would print.
std::string Answer(Request const& request);

} // namespace fuzz
