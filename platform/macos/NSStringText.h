#pragma once

#import <Foundation/Foundation.h>

#include <string_view>

namespace velmo {

/// Makes a string of the text; nil if it is not UTF-8.
NSString* stringFrom(std::string_view text);

} // namespace velmo
