#pragma once
// The INI reader: a unit's section and its channel keys into plain metadata values. It knows no
// program's records: the converter's unit and channel records are built on these structs, and
// other programs read the same file through the same calls.
#include <cstdint>

namespace lm {

// What a unit's section gives, and where that section lies in the file.
struct UnitMeta {
  std::int32_t ini_first = 0;  // offset of the section's header once found; later reads start there
  std::int32_t ini_last = 0;   // offset where the unit's own read stopped
  std::uint16_t orientation = 0;
  double lat = 0, lon = 0, alt = 0;
  std::uint16_t das_cnt = 0;
  std::uint16_t chn_cnt = 0;
  std::uint16_t stn_type = 0;
  char station[6] = {};
  char geology[41] = {};
  char net_seed[3] = {};  // the SEED network code
};

// One complex root of the sensor's transfer function, in rad/s.
struct PzRoot {
  double re = 0, im = 0;
};
// Poles and zeros together that a channel keeps: a bounded array, as the record is copied per channel.
inline constexpr int kPzRoots = 16;

// What a channel's keys give. Fields that only the first line sets keep a value already there.
struct ChnMeta {
  char seiscomp[5] = {};
  char make[31] = {};
  char model[16] = {};
  std::uint32_t sn = 0;
  std::uint8_t bits = 0;
  char band = 0;
  char type = 0;
  char axis = 0;
  std::uint16_t sensor_ndx = 0;
  std::uint16_t vpu_ndx = 0;
  double freq = 0;
  double damp = 0;
  double sns_fsa = 0;
  double vpu = 0;
  double chn_fsa = 0;
  double depth = 0;
  std::uint16_t azimuth = 0;
  std::int16_t dip = 0;
  bool azimuth_given = false;  // an Azm line was read; without one the axis gives the azimuth
  bool dip_given = false;      // a Dip line was read; likewise
  // Syntax: ChnZero=re,im and ChnPole=re,im one root a line in rad/s (",im" omitted: 0); ChnNZNP=nz,np
  // the counts, zeros without a line lying at the origin; ChnNorm=f the normalisation frequency in Hz.
  PzRoot pz[kPzRoots];         // zeros and poles in the order given
  std::uint16_t pole_bits = 0; // bit i set: pz[i] is a pole, else a zero
  std::uint8_t pz_cnt = 0;
  bool pz_overflow = false;    // more roots were given than pz holds
  bool nznp_given = false;
  std::uint8_t nznp_zeros = 0, nznp_poles = 0;
  double norm_freq = 0;
};

// The unit's values from its section of the INI file at `path` (a path that does not exist: none).
void Unit_ini(UnitMeta& unit, std::uint16_t unit_id, const char* path);
// The values of channel `channel` (0-based) from the same section, found from unit.ini_first on.
void Chn_ini(ChnMeta& chn, std::uint16_t channel, UnitMeta& unit, std::uint16_t unit_id, const char* path);

}  // namespace lm
