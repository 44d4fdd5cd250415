// Files, directories, the environment and the command line.
//
// Public routines take blank-padded text and report failure through the
// toolkit's error state: a failed system call is error 13 with the system's error
// number in `iapierr`. Text outputs follow the convention of fixed_text.h.
// Below them the yyos layer maps one-to-one onto the system and returns the
// system's error number, 0 for success.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Path types.
constexpr int kPathNone = 0, kPathFile = 1, kPathDirectory = 2;

// Listing flags of IOsDirCount and IOsDirInfo.
enum DirListFlags : int {
  kDirReverse = 1,
  kDirNoCase = 2,
  kDirSortName = 8,
  kDirSortDate = 0x10,
  kDirSortSize = 0x20,
  kDirNoDots = 0x80,
  kDirHidden = 0x100,
  kDirMatchPeriod = 0x200,
  kDirSortExtension = 0x400,
};

// Command-line argument; 0 is the program, a negative or missing index blank.
void iosargument(int index, std::string& text);
inline void IOsArgument(int index, std::string& text) { iosargument(index, text); }
// Number of arguments after the program name.
int yyosargcount();

// The process's current directory, without trailing separator. Too narrow a
// text: error 1023.
void IOsDirName(std::string& dir);
void IOsDirChange(std::string_view dir);
void IOsDirMake(std::string_view dir);
// Removes an empty directory.
void IOsDirDelete(std::string_view dir);
// Removes a directory with all it contains. A symbolic link inside is removed,
// never followed.
void iosdeletetree(std::string_view dir);

bool iosdirexists(std::string_view path);
// Exists and is no directory.
bool iosfileexists(std::string_view path);
inline bool IOsFileExists(std::string_view path) { return iosfileexists(path); }
// kPathNone, kPathFile or kPathDirectory; a link counts as what it points to.
int iospathtype(std::string_view path);

// What a listing takes (`idirinfo`): "F" files, "D" directories, "FD" both,
// either case. A text with neither letter changes nothing.
void iosdirentrytype(std::string_view options);

// Number of entries of the directory (blank: the current one) that match the
// pattern: glob patterns separated by blanks, double quotes around one that holds
// blanks; a blank pattern takes all. Flags as DirListFlags, absent: name order.
void IOsDirCount(std::string_view dir, std::string_view pattern, int& count, std::optional<int> flags = {});
// The entries, sorted: `count` is the room on entry (no more than names.size())
// and the number stored on return. Dates are modification time stamps, sizes in
// bytes; pass empty spans to leave them out.
void IOsDirInfo(std::string_view dir, std::string_view pattern, std::span<std::string> names, int& count,
                std::span<int> dates = {}, std::span<int> sizes = {}, std::optional<int> flags = {});

// Copies a file through the shell. A blank target or one ending in "/" takes the
// source's base name. Same source and target: error 55.
void IOsCopyFile(std::string_view source, std::string_view target);
// Deletes files: by default through the shell, so that the name may be a
// pattern; with flag bit 1 exactly that name.
void IOsDeleteFile(std::string_view file, std::optional<int> flags = {});

// Up to `count` values (at least one, at most 10): 1 size in bytes or -1 when the
// file can't be read, 2-7 year, month, day, hour, minute, second of the
// modification time in local time, 8 mode bits, 9 size in kilobytes rounded up,
// 10 path type.
void iosfileinfo(std::string_view file, std::span<int> values, int count);
// Splits a time stamp in local time.
void iosfiledate(int stamp, int& year, int& month, int& day);
void iosfiletime(int stamp, int& hour, int& minute, int& second);

// Absolute path: a relative one is joined to the current directory and every
// "/./" reduced to "/"; ".." stays as it is.
void iosfullpathname(std::string_view path, std::string& full);
inline void IOsFullPathName(std::string_view path, std::string& full) { iosfullpathname(path, full); }

// Environment variable; unset gives blank, a value wider than the text error 1023
// and blank.
void IOsVariable(std::string_view name, std::string& value);

// End the process with `code`. A non-blank message first goes to standard output
// as "Abnormal exit (code N   ) : message" (code left-justified in four places).
[[noreturn]] void iosexitprogram(std::string_view message, int code);
// The same with "Abnormal exit (code N) : message".
[[noreturn]] void IOsExitProgram(std::string_view message, int code);

// ---------------------------------------------------------------------------
// The layer below: plain (trimmed) text, the system's error number as result.

int yyosargument(int index, std::string& text);
int yyosdirname(std::string& dir, std::size_t size);  // ERANGE when size is too small
int yyosdirchange(std::string_view dir);
int yyosdirmake(std::string_view dir);
int yyosdirdelete(std::string_view dir);
int yyospathtype(std::string_view path);
// Size in bytes, modification time stamp, mode bits; follows links.
int yyosstat(std::string_view path, long long& size, long long& mtime, int& mode);

// An open directory stream. It closes itself when it goes, so that no early
// return leaves a descriptor behind; yyosdirclose closes it sooner.
struct OsDirStream;
struct OsDirClose {
  void operator()(OsDirStream* stream) const;
};
using OsDir = std::unique_ptr<OsDirStream, OsDirClose>;

int yyosdiropen(std::string_view dir, OsDir& handle);
// The next name in directory order, "." and ".." included; an empty name at the
// end. A closed handle reads as ended.
int yyosdirread(OsDir& handle, std::string& name);
// True if the name matches one glob pattern. With `period` a leading dot of the
// name must be matched by a dot of the pattern.
bool yyosdirmatch(std::string_view name, std::string_view pattern, bool period);
int yyosdirclose(OsDir& handle);

// The next value of a text of values separated by blanks, a value holding blanks
// standing in double quotes. `pos` is where to go on from, 0 at first; false
// when none is left.
bool yylocatevalue(std::string_view text, std::size_t& pos, std::string& value);

// Values of a file, as iosfileinfo gives them; a failed look-up leaves the size
// -1 and the rest 0.
constexpr std::size_t kFileInfoCount = 10;
int yyosfileinfo(std::string_view path, std::array<int, kFileInfoCount>& values);
// A time stamp split in local time.
void yyosfiledate(long long stamp, int& year, int& month, int& day);
void yyosfiletime(long long stamp, int& hour, int& minute, int& second);
int yyosdeletefile(std::string_view file);
int yyosrenamefile(std::string_view from, std::string_view to);
// 0 and the value when set, ENOENT when unset.
int yyosvariable(std::string_view name, std::string& value);
int yyosvariableput(std::string_view name, std::string_view value);
std::string yyoserrorstr(int err);
int yyosgethomedir(std::string& dir);
// The file that keeps the toolkit's registry: zelvy.reg in the user's
// configuration directory (XDG_CONFIG_HOME, else HOME or the password
// entry's home followed by "/.config"); 0, or the error when there is no home.
int yyosregistryfile(std::string& file);
int yyosuserid();
// The kernel release text.
int yyosversion(std::string& release);
[[noreturn]] void yyosexitprogram(int code);
