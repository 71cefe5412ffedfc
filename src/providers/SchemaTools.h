#pragma once

#include <boost/json/object.hpp>

namespace morvane {

/// The tool's JSON Schema without the descriptions of its parameters, to save context on small models.
/// `type`, `enum`, `required` and `items` stay everywhere. Any thread.
boost::json::object compactSchema(const boost::json::object &schema);

/// Merges `source` into `target`: where both hold an object under a key these merge in turn, everything else
/// is replaced, arrays too. Any thread.
void deepMerge(boost::json::object &target, const boost::json::object &source);

} // namespace morvane
