#pragma once

// How the objects of a run are called before people: the titles in the execution log.

#include <string>

namespace brask {

/// The display name of an object's id, 1 to 27; "Unspecified" for any other id.
std::string objectDisplayName(int id);

/// The display name of an object's type, such as "Database user". A type without one is given back unchanged.
std::string objectTypeDisplayName(const std::string& type);

} // namespace brask
