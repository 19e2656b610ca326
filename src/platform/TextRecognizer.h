#pragma once

#include "platform/Image.h"

#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace lumiwren {

/// One line of text.
struct TextObservation {
  /// UTF-8; empty when there is nothing that the line can be read as.
  std::optional<std::string> topCandidate;
  friend bool operator==(const TextObservation &, const TextObservation &) = default;
};

/// Why no text could be recognised; what() says it to the user, with the remedy where there is one.
class TextRecognitionError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Reads the text in pictures: at its most accurate, with the word lists of the languages, which it finds out
/// itself. Any thread; one recognition runs at a time, others wait for it.
class TextRecognizer {
public:
  virtual ~TextRecognizer() = default;

  /// Begins, in the background, to load what recognition needs, because it will be wanted soon.
  virtual void prepare() = 0;
  /// The lines of text in reading order; none when there is no text. Throws TextRecognitionError, and
  /// CancellationError as soon as the token is stopped.
  virtual std::vector<TextObservation> recognize(const Bitmap &bitmap, const std::stop_token &token) = 0;
};

}  // namespace lumiwren
