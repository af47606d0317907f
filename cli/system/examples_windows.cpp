#include "cli/system/examples.h"

namespace quaylink::cli {

const std::string_view kFirstExamples =
    "  quaylink status              is a player attached?\n"
    "  quaylink tracks              list its music\n"
    "  quaylink export ~\\Music      copy all of it";

const std::string_view kStatusExamples =
    "  quaylink status\n"
    "  quaylink status -q && quaylink export ~\\Music";

const std::string_view kTracksExamples =
    "  quaylink tracks\n"
    "  quaylink tracks --artist bjork --sort album\n"
    "  quaylink tracks --kind podcast --columns released,bookmarkMs --sort released\n"
    "  quaylink tracks --csv > tracks.csv\n"
    "  quaylink tracks --from E:\\";

const std::string_view kPlaylistsExamples =
    "  quaylink playlists\n"
    "  quaylink playlists E:\\iPod_Control\\iTunes\\iTunesDB\n"
    "  quaylink tracks --playlist Favourites";

const std::string_view kExportExamples =
    "  quaylink export ~\\Music\n"
    "  quaylink export ~\\Music --verify\n"
    "  quaylink export \"D:\\My Music\"\n"
    "  quaylink export --from E:\\ ~\\Music --artist björk --dry-run\n"
    "  quaylink export ~\\Music --name \"{genre}/{artist} - {title}[ ({year})]\"\n"
    "  quaylink export ~\\Podcasts --kind podcast --name \"{album}/[{released} ]{title}\"";

const std::string_view kCopyTrackExamples =
    "  quaylink copy-track 12 song.mp3\n"
    "  quaylink copy-track 12 ~\\Music";

const std::string_view kCopyDatabaseExamples =
    "  quaylink copy-database backup.iTunesDB\n"
    "  quaylink tracks backup.iTunesDB";

const std::string_view kFilesExamples =
    "  quaylink files\n"
    "  quaylink files | findstr /i jpg";

const std::string_view kPullExamples =
    "  quaylink pull /DCIM/100APPLE/IMG_0001.JPG ~\\Pictures\n"
    "  quaylink pull F:\\Notes\\a.txt ~\\Documents\n"
    "  quaylink pull /DCIM ~\\Pictures\\phone\n"
    "  quaylink pull /DCIM ~\\Pictures\\phone --dry-run";

}  // namespace quaylink::cli
