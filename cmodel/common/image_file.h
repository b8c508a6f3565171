// Image files under advisory locks, so that several tools can run as a chain on shared files.
#pragma once

#include <cstdio>

/// Opens an image file under an exclusive advisory lock that lasts until CM_Fclose. Never returns null: a
/// file that cannot be opened, for reading or for writing, is waited for without end. A file opened for
/// writing is emptied only once it is locked, and a new one appears already locked. Character devices and
/// FIFOs are not locked. REQUIRES mode "rb" or "wb".
std::FILE *CM_Fopen(const char *path, const char *mode);

/// Releases the lock and closes. Returns the result of the close.
int CM_Fclose(std::FILE *stream);

namespace cfa {

/// Writes `size` bytes, past the buffer of the stream, which must be empty. A failure ends the process with
/// one line and status 1; a regular file is cut to length 0 first, so that it does not look finished.
void image_write(std::FILE *stream, const char *path, const void *data, size_t size);

/// CM_Fclose of a stream that was written to; a failure that the close reports ends the process as above.
void image_close_written(std::FILE *stream, const char *path);

} // namespace cfa
