/// @file Telling requests of this appliance's own pages from those of foreign ones.
#pragma once

namespace standin {

/// Returns whether a page of another site or origin made a browser send the request. HTTP
/// authentication does not protect from that: the browser adds the user's login by itself. Looks at
/// Sec-Fetch-Site (Fetch Metadata) and Origin (RFC 6454); a request without these headers, such as
/// one of a program, is not foreign.
bool IsForeignRequest();

} // namespace standin
