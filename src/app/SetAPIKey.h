#pragma once

namespace lumiwren {

/// Reads the API key from standard input, up to the end of its first line, and stores it in the keyring. A
/// terminal does not show what is typed. Returns the exit status of the program; throws std::runtime_error,
/// with a text for the user, when there is no key or it cannot be stored.
int setAPIKey();

}  // namespace lumiwren
