// Image files under advisory locks, so that several tools can run as a chain on shared files.
#pragma once

#include <cstdio>
#include <memory>

/// Opens an image file under an exclusive advisory lock that lasts until CM_Fclose. Never returns null: a
/// file that cannot be opened, for reading or for writing, is waited for without end. A file opened for
/// writing is emptied only once it is locked, and a new one appears already locked. Character devices and
/// FIFOs are not locked. REQUIRES mode "rb" or "wb".
std::FILE *CM_Fopen(const char *path, const char *mode);

/// Releases the lock and closes. Returns the result of the close.
int CM_Fclose(std::FILE *stream);

namespace cfa {

/// CM_Fopen for who can take an error: throws std::bad_alloc where no memory ends the process.
std::FILE *open_image(const char *path, const char *mode);

struct ImageFileCloser {
    void operator()(std::FILE *stream) const { CM_Fclose(stream); }
};
/// An open image file, closed by CM_Fclose.
using ImageFile = std::unique_ptr<std::FILE, ImageFileCloser>;

/// Writes `size` bytes, past the buffer of the stream, which must be empty. A failure is an Error; a regular
/// file is cut to length 0 first, so that it does not look finished.
void image_write(std::FILE *stream, const char *path, const void *data, size_t size);

/// Closes a file that was not written to its end, a regular one emptied.
void image_discard(ImageFile file);

/// CM_Fclose of a stream that was written to; a failure that the close reports is an Error as above.
void image_close_written(ImageFile file, const char *path);

} // namespace cfa
