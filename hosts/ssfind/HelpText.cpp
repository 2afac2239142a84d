#include "hosts/ssfind/HelpText.h"

namespace searchsystem::ssfind {

const char *const helpHeader =
    R"(Finds images and documents by their extension, in any case:

photographs: jpg jpeg jpe jfif tif tiff png webp heic heif hif avif jxl psd, raw
             dng cr2 cr3 crw nef nrw arw sr2 orf rw2 raf pef srw 3fr fff iiq rwl
documents:   pdf
others:      gif bmp psb svg eps ai pct pict jp2 tga exr hdr

Usage: ssfind [OPTION...] [FOLDER...])";

const char *const helpFooter =
    R"(FOLDER is the current folder if none is named. Below it, names that begin with
a dot, packages and links to folders are not searched; nor are, even with
--mounts, the kernel's own file systems such as /proc. What cannot be read below
it is passed over, and so is what --files-from lists and is not there.

RANGE is FROM..TO, FROM.., ..TO or a single date, in local time. A date means
all of it, so that TO includes its last second, and is
  a year, month, day, minute or second: 2024, 2024-05, 2024-05-17, 2024/05/17,
    20240517, 2024-05-17T10:30, "2024-05-17 10:30:15", a time also with Z or an
    offset as in 10:30+02:00; or the seconds since 1970: @1715934600;
  one by the calendar: today, yesterday, "this week" (from Monday), "last year",
    "3 days ago";
  a time so long ago: 3d, "2 weeks", with s, min, h, d, w, mo or y, which alone
    means all since then.

SIZES is such a range of sizes: 1.5M..20M, 100k.. or +100k, ..2Gi or -2Gi, or a
single size, which means just that. k, M, G and T are powers of 1000; ki, Mi, Gi
and Ti of 1024.

With several names and keywords each must be met, or with --any one of all
conditions. --extension, --size, --max-depth and --exclude must be met in any
case. No file is read that a condition on its name or size leaves out.

A keyword is looked for in the text that a PDF document shows, forms and
annotations included, and in what a photograph says of itself in Exif, IPTC, XMP
and texts of its container, or in an XMP file beside it (of a.jpg a.jpg.xmp or
a.xmp): titles, captions, keywords, people, places, authors, rights, comments,
camera and lens. Words and phrases are found across lines. Not found is text in
scans that nobody has had recognised, and in documents that need a password;
document information, bookmarks, comments and attachments are not searched.
Standard error says at the end how many files could not be read. Where all
conditions must hold, --taken finds photographs only. A photograph is dated by
Exif, or else XMP, IPTC or PNG.

With --plain the files are those with the extension tif, jpg, pdf or pct, PDF
text is found only where it is written uncompressed, which it seldom is, and of
photographs four EXIF texts (description, maker, model, comment) and the EXIF
date, where they stand in the first 65,535 bytes.

Names are escaped on a terminal, and written as they are to a file or pipe.

COMMAND is run without a shell. The output of several at a time is written when
each has ended. A path that begins with a dash gets ./ before it. An interrupt,
and an output that nobody reads any more, end all commands.

Exit codes: 0 something matched; 1 nothing matched; 2 bad usage, a FOLDER or
list that cannot be read, output that cannot be written, or a COMMAND that
failed; 130 interrupted.

Examples:
  ssfind ~/Pictures --name beach --modified 2023-06..2024-05
  ssfind -k beach -t 2024-07 ~/Pictures       photographs of that month
  ssfind -k invoice --in pdf ~/Documents      documents with that word
  ssfind -m 2024-05-17T10:30.. --long         all that changed since then
  ssfind -m 3d                                in the last three days
  ssfind -g -n "IMG_*.jpg" -E trash -S 5M..   large ones, not in such a folder
  ssfind --sort modified --limit 10           the ten newest
  ssfind --sort size --format "{size} {path}" the largest first
  ssfind -e tif -x convert {} {.}.png         in parallel
  ssfind -k invoice -X zip invoices.zip       all in one command
  ssfind ~/Scans -0 | xargs -0r cp -t /disk   safe for names with line ends
  git ls-files -z | ssfind --files-from - -0 -n logo
  ssfind -q -n invoice ~/Documents && echo "there are invoices")";

} // namespace searchsystem::ssfind
