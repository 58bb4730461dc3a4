#pragma once

#include "phone/HttpExchange.h"

#include <span>

namespace velmo {

/// Returns the files of the page, which the build has made of phone/page and of what npm brings.
std::span<const PageFile> pageFiles();

} // namespace velmo
