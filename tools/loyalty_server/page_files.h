// loyalty_server/page_files.h: the files of the folder page, as they are served.
#pragma once

namespace loyalty {

extern const char *const kPageHtml;
extern const char *const kPageCss;
extern const char *const kPageJs;

}  // namespace loyalty
