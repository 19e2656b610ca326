#pragma once

#include <string>
#include <string_view>

namespace lumiwren {

/// What a reader sees of release notes that may be HTML, as plain text: tags are gone, character references
/// are what they stand for, paragraphs and list items stand on lines of their own. Text without a tag keeps
/// its lines. The result must not be taken for markup again. `notes` is UTF-8; 100,000 bytes of the result at
/// the most are kept. Any thread.
std::string plainReleaseNotes(std::string_view notes);

}  // namespace lumiwren
