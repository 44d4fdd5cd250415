// data_param: the one job state of the program, shared by every routine.
// Text fields are blank-padded to their width; matrices are 3 by 3, (row, column).
#pragma once

#include <array>

#include "toolkit/kernel/message.h"
#include "toolkit/base/fixed_text.h"

namespace data_param {

using Vec3 = std::array<float, 3>;
using Mat3 = std::array<std::array<float, 3>, 3>;

// Files and paths.
inline Fixed<256> file_inp;
inline Fixed<40> codefile;
inline Fixed<512> working_dir;
inline Fixed<512> actual_dir;
inline Fixed<256> file_dat;
inline Fixed<256> file_out;
inline Fixed<4> var_system;
inline Fixed<1> var_sep;
inline Fixed<150> tarnhold_suite;

// Job description.
inline Fixed<80> title;
inline Fixed<60> spgr;
inline Vec3 cel{};
inline Vec3 ang{};
inline bool cell_given = false;
inline float wavel = 0;
inline bool wave_given = false;
inline int hkl_type = 0;
inline Mat3 transhkl{};
inline bool transf_ind = false;
inline bool friedel = true;
inline float scal_fact = 0;
inline bool scale_given = false;
inline bool powder = false;
inline float epsg = 0;
inline bool eps_given = false;
inline Vec3 kv{};
inline bool prop = false;
inline bool domain = false;
inline float warning = 0;

// Twin description. Domain i (1..24) is twin[i]; twin[0] is never written.
inline constexpr int max_domains = 24;
inline bool twinned = false;
inline Fixed<80> twin_name;
inline int itwin = 0;
inline int nmat = 0;
inline std::array<Mat3, max_domains + 1> twin{};
inline Mat3 tr{};
inline bool itransf = false;
inline Mat3 ubm{};
inline bool iubm = false;
inline Fixed<20> machine;
inline Fixed<40> twin_spg;
inline bool ispg = false;

// The last message of WMessage, for the main loop and the nested loops.
inline int evento = 0;
inline MessageRecord mensaje{};

}  // namespace data_param
