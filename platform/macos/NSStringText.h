#pragma once

#import <Foundation/Foundation.h>

#include <string_view>

namespace velmo {

/// Nil when the text is no UTF-8.
NSString* stringFrom(std::string_view text);

} // namespace velmo
