#include "platform/macos/NSStringText.h"

namespace velmo {

NSString* stringFrom(std::string_view text) {
    return [[NSString alloc] initWithBytes:text.data()
                                    length:text.size()
                                  encoding:NSUTF8StringEncoding];
}

} // namespace velmo
