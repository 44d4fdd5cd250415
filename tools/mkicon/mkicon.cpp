// mkicon IMAGES.zrc PIXMAP SIZE OUT.png
//
// Draws one pixel map of the resource images as a square PNG of the given
// size, for the desktop's icon theme: the program's icon at every size the
// theme asks for comes from the same pixels as the one in its windows.
// Enlarging repeats pixels (the picture is drawn pixel by pixel and should stay
// crisp); shrinking averages the pixels that fall on one, weighting colour by
// coverage so that transparent pixels don't darken the edges.
#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Rgba {
  std::uint8_t r = 0, g = 0, b = 0, a = 0;
};

struct Pixmap {
  int width = 0, height = 0;
  std::vector<std::string> rows;
};

[[noreturn]] void die(const std::string& why) {
  std::fprintf(stderr, "mkicon: %s\n", why.c_str());
  std::exit(1);
}

// The text between the first pair of double quotes on the line, or nothing.
bool quoted(const std::string& line, std::string& text, std::size_t& end) {
  const auto a = line.find('"');
  if (a == std::string::npos) return false;
  const auto b = line.find('"', a + 1);
  if (b == std::string::npos) return false;
  text = line.substr(a + 1, b - a - 1);
  end = b + 1;
  return true;
}

void read_images(const std::string& path, const std::string& name, std::map<char, Rgba>& palette, Pixmap& pixmap) {
  std::ifstream in(path);
  if (!in) die("cannot read " + path);
  std::string line;
  enum { kNone, kPalette, kPixmap } block = kNone;
  while (std::getline(in, line)) {
    const auto first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '#') continue;
    if (block == kNone) {
      std::istringstream words(line);
      std::string word, id;
      words >> word;
      if (word == "palette") block = kPalette;
      if (word == "pixmap" && (words >> id) && id == name) {
        words >> pixmap.width >> pixmap.height;
        block = kPixmap;
      }
      continue;
    }
    if (line[first] == '}') {
      if (block == kPixmap) return;
      block = kNone;
      continue;
    }
    std::string text;
    std::size_t end = 0;
    if (!quoted(line, text, end)) continue;
    if (block == kPixmap) {
      pixmap.rows.push_back(text);
      continue;
    }
    if (text.size() != 1) die("bad palette entry: " + line);
    std::istringstream rest(line.substr(end));
    std::string value;
    rest >> value;
    Rgba c;
    if (value != "transparent") {
      const unsigned long v = std::strtoul(value.c_str(), nullptr, 16);
      c = {static_cast<std::uint8_t>(v >> 16), static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v), 255};
    }
    palette[text[0]] = c;
  }
  die("no pixmap " + name + " in " + path);
}

Rgba source(const std::map<char, Rgba>& palette, const Pixmap& p, int x, int y) {
  const char ch = p.rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
  const auto it = palette.find(ch);
  if (it == palette.end()) die(std::string("colour '") + ch + "' is not in the palette");
  return it->second;
}

std::vector<Rgba> scaled(const std::map<char, Rgba>& palette, const Pixmap& p, int size) {
  std::vector<Rgba> out(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      // The source pixels this one covers: [x0, x1) by [y0, y1), at least one.
      const int x0 = x * p.width / size, y0 = y * p.height / size;
      const int x1 = std::max(x0 + 1, (x + 1) * p.width / size), y1 = std::max(y0 + 1, (y + 1) * p.height / size);
      double r = 0, g = 0, b = 0, a = 0;
      for (int sy = y0; sy < y1; ++sy) {
        for (int sx = x0; sx < x1; ++sx) {
          const Rgba c = source(palette, p, sx, sy);
          r += c.r * c.a; g += c.g * c.a; b += c.b * c.a; a += c.a;
        }
      }
      const int n = (x1 - x0) * (y1 - y0);
      Rgba& o = out[static_cast<std::size_t>(y) * static_cast<std::size_t>(size) + static_cast<std::size_t>(x)];
      if (a > 0) {
        o.r = static_cast<std::uint8_t>(r / a + 0.5);
        o.g = static_cast<std::uint8_t>(g / a + 0.5);
        o.b = static_cast<std::uint8_t>(b / a + 0.5);
      }
      o.a = static_cast<std::uint8_t>(a / n + 0.5);
    }
  }
  return out;
}

void put32(std::string& s, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) s += static_cast<char>((v >> shift) & 0xff);
}

void chunk(std::string& png, const char* type, const std::string& data) {
  put32(png, static_cast<std::uint32_t>(data.size()));
  const std::string body = std::string(type, 4) + data;
  png += body;
  put32(png, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()),
                                              static_cast<uInt>(body.size()))));
}

void write_png(const std::string& path, const std::vector<Rgba>& pixels, int size) {
  std::string raw;
  for (int y = 0; y < size; ++y) {
    raw += '\0';  // no filter
    for (int x = 0; x < size; ++x) {
      const Rgba& c = pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(size) + static_cast<std::size_t>(x)];
      raw += static_cast<char>(c.r); raw += static_cast<char>(c.g); raw += static_cast<char>(c.b); raw += static_cast<char>(c.a);
    }
  }
  uLongf packed_size = compressBound(static_cast<uLong>(raw.size()));
  std::string packed(packed_size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packed_size, reinterpret_cast<const Bytef*>(raw.data()),
                static_cast<uLong>(raw.size()), 9) != Z_OK)
    die("compression failed");
  packed.resize(packed_size);

  std::string png = "\x89PNG\r\n\x1a\n";
  std::string header;
  put32(header, static_cast<std::uint32_t>(size));
  put32(header, static_cast<std::uint32_t>(size));
  header += std::string("\x08\x06\x00\x00\x00", 5);  // 8 bits, RGBA, deflate, no filter choice, no interlace
  chunk(png, "IHDR", header);
  chunk(png, "IDAT", packed);
  chunk(png, "IEND", "");
  std::ofstream out(path, std::ios::binary);
  out << png;
  if (!out) die("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) die("usage: mkicon IMAGES.zrc PIXMAP SIZE OUT.png");
  std::map<char, Rgba> palette;
  Pixmap pixmap;
  read_images(argv[1], argv[2], palette, pixmap);
  if (pixmap.width <= 0 || pixmap.height <= 0 || static_cast<int>(pixmap.rows.size()) != pixmap.height)
    die("pixmap " + std::string(argv[2]) + " has not the rows it says");
  for (const auto& row : pixmap.rows)
    if (static_cast<int>(row.size()) != pixmap.width) die("a row of " + std::string(argv[2]) + " has the wrong width");
  const int size = std::atoi(argv[3]);
  if (size < 1 || size > 1024) die("size out of range");
  write_png(argv[4], scaled(palette, pixmap, size), size);
  return 0;
}
