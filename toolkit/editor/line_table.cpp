// The line table: where each display line starts, kept up to date by
// rescanning only the text lines a change touches.
#include "toolkit/editor/editor_private.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

bool is_lead(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

// Loaded files run to tens of megabytes: the scans below look at eight bytes
// at a time.
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kEveryByte = 0x0101010101010101ull;
constexpr std::uint64_t kHighBits = 0x8080808080808080ull;

std::uint64_t word_at(const char* p) {
  std::uint64_t w;
  std::memcpy(&w, p, kWord);
  return w;
}

// High bit set in each byte of w that is zero.
std::uint64_t zero_bytes(std::uint64_t w) { return (w - kEveryByte) & ~w & kHighBits; }

// Number of bytes whose high bit is set in a mask of high bits.
int count_high(std::uint64_t mask) { return static_cast<int>(((mask >> 7) * kEveryByte) >> 56); }

int count_leads(const char* p, std::size_t n) {
  int followers = 0;
  std::size_t i = 0;
  for (; i + kWord <= n; i += kWord) {
    const std::uint64_t w = word_at(p + i);
    followers += count_high(w & ~(w << 1) & kHighBits);  // 10xxxxxx continues a character
  }
  for (; i < n; ++i) followers += is_lead(p[i]) ? 0 : 1;
  return static_cast<int>(n) - followers;
}

// Offset of the first byte from `from` on that is a carriage return or not ASCII; n when none.
std::size_t next_special(const unsigned char* b, std::size_t from, std::size_t n) {
  constexpr std::uint64_t kReturns = kEveryByte * '\r';
  std::size_t i = from;
  for (; i + kWord <= n; i += kWord) {
    const std::uint64_t w = word_at(reinterpret_cast<const char*>(b + i));
    if ((w & kHighBits) || zero_bytes(w ^ kReturns)) break;
  }
  for (; i < n; ++i)
    if (b[i] == '\r' || b[i] >= 0x80) return i;
  return n;
}

// A place in the pieces: which piece, the byte in it, and the character
// offset from the start of the pieces.
struct TextCursor {
  int piece = 0;
  std::size_t byte = 0;
  int chars = 0;
};

void skip_empty(const EditPieces& t, TextCursor& c) {
  while (c.piece < 3 && c.byte >= t.part[static_cast<std::size_t>(c.piece)].size()) {
    ++c.piece;
    c.byte = 0;
  }
}

// Moves a cursor to a character offset from the start.
TextCursor seek(const EditPieces& t, int chars) {
  TextCursor c;
  for (; c.piece < 3; ++c.piece) {
    const std::string_view p = t.part[static_cast<std::size_t>(c.piece)];
    for (c.byte = 0; c.byte < p.size(); ++c.byte) {
      if (!is_lead(p[c.byte])) continue;
      if (c.chars == chars) return c;
      ++c.chars;
    }
  }
  c.byte = 0;
  return c;
}

// Without word wrap only line ends matter: a search per piece.
bool next_plain(const EditPieces& t, TextCursor& c) {
  for (skip_empty(t, c); c.piece < 3; skip_empty(t, c)) {
    const std::string_view p = t.part[static_cast<std::size_t>(c.piece)];
    const char* from = p.data() + c.byte;
    const std::size_t left = p.size() - c.byte;
    const void* nl = std::memchr(from, '\n', left);
    const std::size_t n = nl ? static_cast<std::size_t>(static_cast<const char*>(nl) - from) + 1 : left;
    c.chars += count_leads(from, n);
    c.byte += n;
    if (nl) {
      skip_empty(t, c);
      return true;
    }
  }
  return false;
}

// The bytes of the character at a cursor.
std::string_view character_at(const EditPieces& t, const TextCursor& c) {
  const std::string_view p = t.part[static_cast<std::size_t>(c.piece)];
  std::size_t n = 1;
  while (c.byte + n < p.size() && !is_lead(p[c.byte + n])) ++n;
  return p.substr(c.byte, n);
}

void step(const EditPieces& t, TextCursor& c) {
  const std::size_t n = character_at(t, c).size();
  c.byte += n;
  ++c.chars;
  skip_empty(t, c);
}

bool next_wrapped(const EditPieces& t, TextCursor& c, EditRecord& r, EditCharWidth width) {
  skip_empty(t, c);
  bool started = false;  // the display line holds a character already
  bool blank_seen = false;
  TextCursor last_blank;  // the last blank or tab of this display line
  int sum = 0;
  while (c.piece < 3) {
    const std::string_view ch = character_at(t, c);
    if (ch[0] == '\n') {
      step(t, c);
      return true;
    }
    const bool blank = ch[0] == ' ' || ch[0] == '\t';
    const int w = width ? width(r, ch) : 1;
    if (started && sum + w > r.WrapWidth) {
      // Break behind the last blank or tab, this character included, so that
      // the blank stays at the end of the line; a word wider than the line
      // breaks here.
      if (blank) {
        step(t, c);
      } else if (blank_seen) {
        c = last_blank;
        step(t, c);
      }
      return true;
    }
    sum += w;
    started = true;
    if (blank) {
      last_blank = c;
      blank_seen = true;
    }
    step(t, c);
  }
  return false;
}

bool next_line(const EditPieces& t, TextCursor& c, EditRecord& r, EditCharWidth width) {
  return (r.Flags & edit_flag::kWordWrap) ? next_wrapped(t, c, r, width) : next_plain(t, c);
}

}  // namespace

char EditPieces::at(std::size_t i) const {
  for (const std::string_view p : part) {
    if (i < p.size()) return p[i];
    i -= p.size();
  }
  return '\0';
}

void yyEditLineStartsMem(int op, int count, EditRecord& r) {
  switch (op) {
    case 0:
      r.LineStarts.clear();
      r.SpareStarts.clear();
      r.LineCount = r.SpareCount = 0;
      break;
    case 1: {
      // Capacity grows in steps of ten, so that typing seldom reallocates.
      const std::size_t wanted = static_cast<std::size_t>((count / 10 + 1) * 10);
      if (r.SpareStarts.size() != wanted) {
        r.SpareStarts.assign(wanted, 0);
        r.SpareCount = 0;
      }
      break;
    }
    case 2:
      std::swap(r.LineStarts, r.SpareStarts);
      std::swap(r.LineCount, r.SpareCount);
      break;
    default: break;
  }
}

int yyEditGetLine(int offset, const EditPieces& t, EditRecord& r, EditCharWidth width) {
  TextCursor c = seek(t, offset);
  if (c.chars != offset) return -1;
  return next_line(t, c, r, width) ? c.chars : -1;
}

int yyEditCountLines(const EditPieces& t, EditRecord& r, EditCharWidth width) {
  TextCursor c;
  int lines = 1;
  while (next_line(t, c, r, width)) ++lines;
  return lines;
}

int yyEditConvertPos(int direction, int value, const EditRecord& r) {
  const auto begin = r.LineStarts.begin(), end = begin + r.LineCount;
  if (direction == 1) {
    const auto it = std::upper_bound(begin, end, value);
    return it == begin ? 0 : static_cast<int>(it - begin) - 1;
  }
  if (value < 0 || value >= r.LineCount) return -1;
  return r.LineStarts[static_cast<std::size_t>(value)];
}

void yyEditBuildLineStarts(const EditPieces& t, EditRecord& r, EditCharWidth width) {
  // One walk over the text: the starts are gathered as they are found, then
  // the table takes the capacity that preparing it for their count would give.
  constexpr std::size_t kGuessedLineBytes = 64;
  std::vector<std::int32_t> starts;
  starts.reserve(t.size() / kGuessedLineBytes + 1);
  starts.push_back(0);
  if (r.Flags & edit_flag::kWordWrap) {
    TextCursor c;
    while (next_wrapped(t, c, r, width)) starts.push_back(c.chars);
  } else {
    // Only line ends matter: a search from one to the next, and characters
    // counted only in a piece that holds more than ASCII.
    int chars = 0;
    for (const std::string_view p : t.part) {
      const bool ascii = yyEditTextIsAscii(p);
      for (std::size_t at = 0; at < p.size();) {
        const void* nl = std::memchr(p.data() + at, '\n', p.size() - at);
        const std::size_t end = nl ? static_cast<std::size_t>(static_cast<const char*>(nl) - p.data()) + 1 : p.size();
        chars += ascii ? static_cast<int>(end - at) : count_leads(p.data() + at, end - at);
        at = end;
        if (nl) starts.push_back(chars);
      }
    }
  }
  const int lines = static_cast<int>(starts.size());
  const std::size_t capacity = static_cast<std::size_t>((lines / 10 + 1) * 10);
  starts.resize(capacity, 0);
  if (starts.capacity() > capacity + capacity / 8) starts.shrink_to_fit();
  r.SpareStarts = std::move(starts);
  r.SpareCount = lines;
  yyEditLineStartsMem(2, 0, r);
}

namespace {

EditPieces changed_pieces(const EditChange& ch) {
  const std::size_t cut1 = yyEditByteOffset(ch.oldtext, ch.startpos - ch.start);
  const std::size_t cut2 = yyEditByteOffset(ch.oldtext, ch.endpos - ch.start);
  return EditPieces{{ch.oldtext.substr(0, cut1), ch.block, ch.oldtext.substr(cut2)}};
}

}  // namespace

void yyEditApplyChange(const EditChange& ch, EditRecord& r, EditCharWidth width) {
  const int oldlines = yyEditCountLines(EditPieces{{ch.oldtext, {}, {}}}, r, width);
  const int newlines = yyEditCountLines(changed_pieces(ch), r, width);
  yyEditGenLineStarts(ch, newlines - oldlines, r, width);
}

void yyEditGenLineStarts(const EditChange& ch, int delta, EditRecord& r, EditCharWidth width) {
  const EditPieces now = changed_pieces(ch);
  const int growth = yyEditCharCount(ch.block) - (ch.endpos - ch.startpos);
  const int first = yyEditConvertPos(1, ch.start, r);
  const int count = r.LineCount + delta;
  yyEditLineStartsMem(1, count, r);
  r.SpareCount = count;
  std::copy_n(r.LineStarts.begin(), first, r.SpareStarts.begin());
  std::size_t i = static_cast<std::size_t>(first);
  r.SpareStarts[i++] = ch.start;
  TextCursor c;
  while (next_line(now, c, r, width)) r.SpareStarts[i++] = ch.start + c.chars;
  for (; static_cast<int>(i) < count; ++i)
    r.SpareStarts[i] = r.LineStarts[i - static_cast<std::size_t>(delta)] + growth;
  yyEditLineStartsMem(2, 0, r);
}

int yyEditCharCount(std::string_view text) { return count_leads(text.data(), text.size()); }

std::size_t yyEditByteOffset(std::string_view text, int characters) {
  int seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!is_lead(text[i])) continue;
    if (seen == characters) return i;
    ++seen;
  }
  return text.size();
}

std::string yyEditTextForWidget(std::string_view bytes) {
  const std::size_t nul = bytes.find('\0');
  if (nul != std::string_view::npos) bytes = bytes.substr(0, nul);
  std::string out;
  out.reserve(bytes.size());
  const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  for (std::size_t i = 0; i < n;) {
    // Plain ASCII between the bytes that need a look goes across whole.
    const std::size_t special = next_special(b, i, n);
    out.append(bytes.substr(i, special - i));
    i = special;
    if (i == n) break;
    const unsigned char c = b[i];
    if (c == '\r') {
      ++i;
      continue;
    }
    // A well-formed sequence passes whole; any other byte stands for itself in ISO 8859-1.
    std::size_t len = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c <= 0xDF ? 2 : 0;
    if (c > 0xF4) len = 0;
    bool ok = len > 0 && i + len <= n;
    for (std::size_t k = 1; ok && k < len; ++k) ok = (b[i + k] & 0xC0) == 0x80;
    if (ok && len == 3) ok = !(c == 0xE0 && b[i + 1] < 0xA0) && !(c == 0xED && b[i + 1] >= 0xA0);
    if (ok && len == 4) ok = !(c == 0xF0 && b[i + 1] < 0x90) && !(c == 0xF4 && b[i + 1] >= 0x90);
    if (ok) {
      out.append(bytes.substr(i, len));
      i += len;
    } else {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
      ++i;
    }
  }
  return out;
}

bool yyEditTextIsAscii(std::string_view bytes) {
  const char* p = bytes.data();
  const std::size_t n = bytes.size();
  std::uint64_t seen = 0;
  std::size_t i = 0;
  for (; i + kWord <= n; i += kWord) seen |= word_at(p + i);
  for (; i < n; ++i) seen |= static_cast<unsigned char>(p[i]);
  return (seen & kHighBits) == 0;
}

bool yyEditTextIsPlain(std::string_view bytes) {
  if (bytes.empty()) return true;
  return !std::memchr(bytes.data(), '\r', bytes.size()) && !std::memchr(bytes.data(), '\0', bytes.size()) &&
         yyEditTextIsAscii(bytes);
}
