// Examples of the program's use, as its help shows them: in the language of this system's command
// line, and with paths as they look there. Each line begins with two spaces; the last has no end.
#pragma once

#include <string_view>

namespace quaylink::cli {

extern const std::string_view kFirstExamples;  // of the whole program, told what they do
extern const std::string_view kStatusExamples;
extern const std::string_view kTracksExamples;
extern const std::string_view kPlaylistsExamples;
extern const std::string_view kExportExamples;
extern const std::string_view kCopyTrackExamples;
extern const std::string_view kCopyDatabaseExamples;
extern const std::string_view kFilesExamples;
extern const std::string_view kPullExamples;

}  // namespace quaylink::cli
