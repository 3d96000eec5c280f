#pragma once

#include <string>

#include "catalogue/picture_list.h"

namespace marlet::catalogue::Artwork {

/// The picture as a file of the kind that its path's ending names, JPEG or PNG. The same picture
/// and size always give the same file on one machine. Needs a QGuiApplication for its words.
std::string draw(const Picture& picture, int width, int height);

}  // namespace marlet::catalogue::Artwork
