// Unbuffered byte files: one call, one system call. Handles are small integers;
// the descriptors behind them are owned by the toolkit and closed at exit.
//
// Failures set `ioetype` 2 and `istat` to the system's error number and raise
// error 1 (open) or 2 (read, write, seek).
#pragma once

#include <span>
#include <string>
#include <string_view>

// Mode 0 read only, 1 write (created or emptied, permissions 0644), 2 read and
// write (created if absent). The name runs from its first to its last non-blank.
// Failure: handle -1.
void IFileOpen(std::string_view name, int mode, int& handle);
inline void ifileopen(std::string_view name, int mode, int& handle) { IFileOpen(name, mode, handle); }
// Closes the file; an unknown handle is ignored.
void ifileclose(int handle);
inline void IFileClose(int handle) { ifileclose(handle); }

// Reads up to `count` bytes (no more than the buffer holds). At the end of the
// file `nread` is 0; on failure -1.
void IFileReadChar(int handle, std::span<char> bytes, int count, int& nread);
void IFileReadChar(int handle, std::span<unsigned char> bytes, int count, int& nread);
// Writes up to `count` bytes of `bytes`; on failure `nwritten` is -1.
void IFileWriteChar(int handle, std::string_view bytes, int count, int& nwritten);
void IFileWriteChar(int handle, std::span<const unsigned char> bytes, int count, int& nwritten);
// Moves by `position` from origin 0 the start, 1 the present position, 2 the
// end, and gives back the position from the start (-1 on failure). Any other
// origin does nothing.
void IFileSeek(int handle, int& position, int origin);

// The layer below IFileOpen: opens and returns 0 or the system's error number.
int yyfileopen(std::string_view name, int mode, int& handle);
