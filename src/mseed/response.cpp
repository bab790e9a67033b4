#include "mseed/response.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "config/tables.hpp"

namespace lm::mseed {
namespace {

using Cx = std::complex<double>;

bool positive(double v) { return std::isfinite(v) && v > 0; }

// The gain code amplifies the sensor's voltage ahead of the converter, whose count weighs tbw volts.
double logger_gain(double tbw, std::uint8_t gain_ndx) { return gain_of(gain_ndx) / tbw; }

// The INI's roots; none, with `why`, when more were given than fit or they disagree with NZNP.
std::optional<PolesZeros> ini_pz(const ChnMeta& m, std::string& why) {
  if (m.pz_overflow) {
    why = "more than " + std::to_string(kPzRoots) + " poles and zeros in the INI";
    return std::nullopt;
  }
  PolesZeros pz;
  for (int i = 0; i < m.pz_cnt; ++i) (m.pole_bits >> i & 1u ? pz.poles : pz.zeros).emplace_back(m.pz[i].re, m.pz[i].im);
  if (m.nznp_given) {
    if (pz.zeros.size() > m.nznp_zeros || pz.poles.size() != m.nznp_poles) {
      why = "NZNP gives " + std::to_string(m.nznp_zeros) + " zeros and " + std::to_string(m.nznp_poles) +
            " poles, the INI lists " + std::to_string(pz.zeros.size()) + " and " + std::to_string(pz.poles.size());
      return std::nullopt;
    }
    pz.zeros.resize(m.nznp_zeros);  // the zeros without a line lie at the origin
  }
  return pz;
}

// The standard second-order sensor: poles -h w0 +- w0 sqrt(h^2 - 1); a velocity sensor has two zeros
// at the origin as well, which make it flat above f0; an accelerometer is flat below it.
PolesZeros second_order(double f0, double h, bool velocity) {
  const double w0 = 2 * std::numbers::pi * f0;
  const Cx root = w0 * std::sqrt(Cx(h * h - 1, 0));
  PolesZeros pz;
  pz.poles = {-h * w0 + root, -h * w0 - root};
  if (velocity) pz.zeros = {0, 0};
  return pz;
}

// Unless the INI names it, a frequency where the sensor is flat: a velocity sensor's 5 f0 but at least
// 1 Hz, an accelerometer's f0 / 5 but at most 1 Hz, else 1 Hz; never above a quarter of the sample
// rate, to stay clear of the anti-alias corner.
double norm_freq(const ChannelMeta& c, bool velocity) {
  if (positive(c.chn.norm_freq)) return c.chn.norm_freq;
  double f = 1;
  if (positive(c.chn.freq)) f = velocity ? std::max(1.0, 5 * c.chn.freq) : std::min(1.0, c.chn.freq / 5);
  return positive(c.rate) ? std::min(f, c.rate / 4) : f;
}

// The ground motion's unit by sensor class; false for the classes without one.
bool set_unit(Response& r, SensorClass cls, std::string& why) {
  switch (cls) {
    case SensorClass::kSeismometer:
      r.unit = "M/S";
      r.unit_text = "Velocity in meters per second";
      return true;
    case SensorClass::kAccelerometer:
      r.unit = "M/S**2";
      r.unit_text = "Acceleration in meters per second squared";
      return true;
    case SensorClass::kUnknown: why = "no sensor of the catalogue (SnsMake, SnsModel)"; return false;
    default: why = "no ground-motion unit for the sensor's class"; return false;
  }
}

// The sensor stage's poles and zeros: the INI's, else the second-order pair from f0 and damping, else none.
bool sensor_pz(const ChannelMeta& c, bool velocity, Response& r, std::string& why) {
  const ChnMeta& m = c.chn;
  if (m.pz_cnt > 0 || m.nznp_given || m.pz_overflow) {
    r.pz = ini_pz(m, why);
    if (!r.pz) return false;
  } else if (positive(m.freq) && positive(m.damp)) {
    r.pz = second_order(m.freq, m.damp, velocity);
  }
  if (!r.pz) return true;
  r.a0 = 1 / std::abs(pz_value(*r.pz, r.freq));
  if (positive(r.a0)) return true;
  why = "the poles and zeros give no finite gain at the normalisation frequency";
  return false;
}

}  // namespace

Cx pz_value(const PolesZeros& pz, double f) {
  const Cx s(0, 2 * std::numbers::pi * f);
  Cx h = 1;
  for (const Cx& z : pz.zeros) h *= s - z;
  for (const Cx& p : pz.poles) h /= s - p;
  return h;
}

std::optional<Response> channel_response(const ChannelMeta& c, std::string& why) {
  Response r;
  const SensorClass cls = sensor_class(c.chn.sensor_ndx);
  if (!set_unit(r, cls, why)) return std::nullopt;
  if (!positive(c.chn.vpu)) {
    why = "no volts per unit for the sensor (SnsVPU)";
    return std::nullopt;
  }
  if (!positive(c.tbw) || !c.gain_known) {
    why = c.gain_known ? "no bit weight from the event header" : "no gain code from the event header";
    return std::nullopt;
  }
  const bool velocity = cls == SensorClass::kSeismometer;
  r.freq = norm_freq(c, velocity);
  if (!sensor_pz(c, velocity, r, why)) return std::nullopt;
  r.sensor_gain = c.chn.vpu;  // SnsVPU is taken as volts per m/s or per m/s**2 by the sensor's class
  r.logger_gain = logger_gain(c.tbw, c.gain_ndx);
  r.sensitivity = r.sensor_gain * r.logger_gain;
  return r;
}

}  // namespace lm::mseed
