#include "platform/phone/Sha256.h"

#include <CommonCrypto/CommonDigest.h>

namespace velmo {

Bytes sha256(ByteView bytes) {
    Bytes hash(CC_SHA256_DIGEST_LENGTH);
    ::CC_SHA256(bytes.data(), static_cast<CC_LONG>(bytes.size()), hash.data());
    return hash;
}

} // namespace velmo
