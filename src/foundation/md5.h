// foundation/md5.h: MD5 digests (RFC 1321) as 32 lower-case hexadecimal characters. Each function returns its
// own shared buffer, overwritten by its next call.
#pragma once

namespace lumo {

const char *Md5Hex(const char *text);
const char *DoubleMd5Hex(const char *a, const char *b, const char *c);  // Md5Hex of a + Md5Hex(b + c)

}  // namespace lumo
