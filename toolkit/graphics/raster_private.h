// The raster device: the page in memory, the software rasteriser under the
// image driver (6) and the printer driver (4), and the printer table.
#pragma once

#include "toolkit/graphics/raster_page.h"

#include <array>
#include <cstdint>
#include <string>

namespace zelvy_graph {

// The printer model chosen by IPrinter: class (1..12 before the PCL classes
// fold to 7 and 8), planes, colour kind, compression, resolutions.
struct PrinterModel {
  int idevice = 28;
  int ipgraf = 7;   // 1..5 ESC/P, 6 ESC/P2, 7 and up PCL
  int navpln = 1;   // colour planes offered
  int iprcol = 0;   // 0 black, 1 red ribbon, 2 colour
  int icmeth = 0;   // compression method
  int nprpin = 1;   // pins of a dot-matrix head
  int lfdhgt = 0;   // line feed of one head pass in 1/216 inch
  std::array<int, 4> ipresn{};
  int nresn = 0;
  int itype2 = 1;   // second printer type, the plotter language model; 0 until IPrinter2 for models that need it
};

// The printer state of a page being dumped: resolution, orientation, offsets.
struct PrinterPage {
  int hdpi = 300, vdpi = 300;
  int orientation = 0;  // 1: the picture is turned a quarter on the paper
  int left = 0, top = 0;  // offsets in decipoints (PCL) or dots
  int copies = 1;
  int pageflags = 3;     // 2 reset before the page, 1 after
  int compression = 0;
};

RasterPage& yyrasterpage();
PrinterModel& yyprintermodel();

}  // namespace zelvy_graph

// Chooses printer model n (2..38 without 27; anything else takes 28).
void IPrinter(int model);
// The second printer type of a model that also speaks the plotter language:
// its model number in that language (below 1 takes the first).
void IPrinter2(int type);
void yyvras(int op);
// A run of gradient pixels from x1 to x2 on raster row y, in one RGB colour,
// written straight into a raster page of 4, 8 or 24 bits; false when the
// hardcopy isn't such a page, and the run must go as a fill.
bool yyvra7(int x1, int x2, int y, int rgb);
void xximag(int op);
void xxrast(int op);
// Three 32-bit dither patterns (4 rows of 8 pixels) of a colour's ink: one
// grey pattern in `red` when `colours` is 2.
void yydith(int mode, int colours, int red, int green, int blue, uint32_t& pr, uint32_t& pg, uint32_t& pb);
// The pattern of `level` bits of 32 for a channel.
uint32_t yydithlevel(int level, int channel);
// The fixed parts of a printer stream: start of page, head of a bit image,
// end of a row, end of page.
struct PrinterCodes {
  std::string graini, bitimg, bitend, graend;
};
PrinterCodes yydumpprintercodes(const zelvy_graph::PrinterModel& model, const zelvy_graph::PrinterPage& printer,
                                int width, int planes);
// The printer takes a copy count of its own.
bool yydoescopies(const zelvy_graph::PrinterModel& model);
// The printer stream of a page: start, rows, end, into `out`.
void yydump(const zelvy_graph::RasterPage& page, const zelvy_graph::PrinterModel& model,
            const zelvy_graph::PrinterPage& printer, std::string& out);
// Page readers of printer dumps: a dot of paper column c, row r (plane -1
// black), and whole rows of one-plane pages. See printer_dump.cpp.
using RasterReader = bool (*)(const zelvy_graph::RasterPage&, int, int, int);
bool yyras1(const zelvy_graph::RasterPage& page, int c, int r, int plane);
bool yyras2(const zelvy_graph::RasterPage& page, int c, int r, int plane);
RasterReader yyras3(bool turned);
void yyras4(const zelvy_graph::RasterPage& page, int r, std::string& out);
bool yyras5(const zelvy_graph::RasterPage& page, int c, int r, int plane);
void yyras6(const zelvy_graph::RasterPage& page, int r, std::string& out);
bool yyras7(const zelvy_graph::RasterPage& page, int c, int r, int plane);
bool yyras8(const zelvy_graph::RasterPage& page, int c, int r, int plane);
bool yyras9(const zelvy_graph::RasterPage& page, int c, int r, int plane);
// Row compressions: 1 repeat and byte pairs, 2 the PackBits rule.
std::string yydumpcompresspcl(std::string_view row, int method);
std::string yydumpcompressescp2(std::string_view row);
