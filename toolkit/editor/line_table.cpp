// The line table: where each display line starts, kept up to date by
// rescanning only the text lines a change touches.
#include "toolkit/editor/editor_private.h"

#include <algorithm>
#include <cstring>

namespace {

bool is_lead(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

int count_leads(const char* p, std::size_t n) {
  int count = 0;
  for (std::size_t i = 0; i < n; ++i) count += is_lead(p[i]) ? 1 : 0;
  return count;
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
  std::vector<TextCursor> line;  // the characters of this display line so far
  int sum = 0;
  while (c.piece < 3) {
    const std::string_view ch = character_at(t, c);
    if (ch[0] == '\n') {
      step(t, c);
      return true;
    }
    const int w = width ? width(r, ch) : 1;
    if (!line.empty() && sum + w > r.WrapWidth) {
      // Break behind the last blank or tab, this character included, so that
      // the blank stays at the end of the line; a word wider than the line
      // breaks here.
      if (ch[0] == ' ' || ch[0] == '\t') {
        step(t, c);
        return true;
      }
      for (auto it = line.rbegin(); it != line.rend(); ++it) {
        const char b = character_at(t, *it)[0];
        if (b == ' ' || b == '\t') {
          c = *it;
          step(t, c);
          return true;
        }
      }
      return true;
    }
    sum += w;
    line.push_back(c);
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
  const int lines = yyEditCountLines(t, r, width);
  yyEditLineStartsMem(1, lines, r);
  r.SpareCount = lines;
  TextCursor c;
  std::size_t i = 0;
  r.SpareStarts[i++] = 0;
  while (next_line(t, c, r, width)) r.SpareStarts[i++] = c.chars;
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
    const unsigned char c = b[i];
    if (c == '\r') {
      ++i;
      continue;
    }
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
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

bool yyEditTextIsPlain(std::string_view bytes) {
  unsigned char seen = 0;
  bool special = false;
  for (const char c : bytes) {
    seen |= static_cast<unsigned char>(c);
    special |= c == '\r' || c == '\0';
  }
  return !(seen & 0x80) && !special;
}
