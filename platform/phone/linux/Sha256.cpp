#include "platform/phone/Sha256.h"

#include <openssl/sha.h>

namespace velmo {

Bytes sha256(ByteView bytes) {
    Bytes hash(SHA256_DIGEST_LENGTH);
    ::SHA256(bytes.data(), bytes.size(), hash.data());
    return hash;
}

} // namespace velmo
