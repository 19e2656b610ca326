#pragma once

#include "actions/CustomAction.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// Why a list of actions cannot be read or written, in one line that holds nothing of the list's own texts.
class CustomActionJSONError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The stored form: one compact JSON array. Throws CustomActionJSONError when a text is not valid UTF-8.
std::string encodeCustomActions(const std::vector<CustomAction> &actions);

/// Reads the stored form, strictly: every key is required and has its type, whole numbers may be written in
/// any way that JSON has (1.0, 1e0). Keys come in any order, unknown ones are ignored, and of a repeated key
/// the first counts. One fault in one action fails the list; throws CustomActionJSONError.
std::vector<CustomAction> decodeCustomActions(std::string_view json);

}  // namespace lumiwren
