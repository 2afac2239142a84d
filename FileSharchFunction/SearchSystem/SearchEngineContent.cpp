#include "FileSharchFunction/SearchSystem/SearchEngine.h"

// The readers of image tags and of PDF text are not part of the library yet: no content condition
// is met by any file.

void SearchEngine::exifSearch(const NSString * /*path*/, char *outKeywordResult,
                              char *outTokenDateResult) const {
  *outKeywordResult = 0;
  *outTokenDateResult = 0;
}

char SearchEngine::PDFSearch(const NSString * /*path*/) const { return 0; }
