#ifndef TESMO_HBBTV_CAROUSEL_CAROUSELEXTRACTION_H
#define TESMO_HBBTV_CAROUSEL_CAROUSELEXTRACTION_H

#include <string>

namespace carousel {

// Writes a carousel file, by its listed path ("/data/menu.txt"), below directory (made with
// its parents). Only below it: every directory on the way is a real one made or found
// there, and the file is a new one, never a link something else put in the way. The path's
// names are the listing's, which refuses names no file may have.
bool extractFile(const std::string& directory, const std::string& path, const std::string& content);

}  // namespace carousel

#endif
