#pragma once
// A channel's instrument response from its metadata alone: a sensor stage (volts per unit of ground
// motion, with poles and zeros when known) and a datalogger stage (counts per volt). Pure functions.
#include <complex>
#include <optional>
#include <string>
#include <vector>

#include "mseed/codes.hpp"
#include "mseed/station_meta.hpp"

namespace lm::mseed {

struct PolesZeros {
  std::vector<std::complex<double>> zeros, poles;  // rad/s
};

struct Response {
  const char* unit = "";        // the ground motion's unit: "M/S" or "M/S**2"
  const char* unit_text = "";
  double freq = 0;              // Hz: where the normalisation, every stage gain and the sensitivity hold
  std::optional<PolesZeros> pz; // none: the sensor stage is a gain alone
  double a0 = 1;                // normalisation factor: |a0 * H(i 2 pi freq)| = 1
  double sensor_gain = 0;       // volts per unit
  double logger_gain = 0;       // counts per volt
  double sensitivity = 0;       // counts per unit
};

// The transfer function of poles and zeros at s = i 2 pi f, without normalisation.
std::complex<double> pz_value(const PolesZeros& pz, double f);
// The response of a channel, or none with `why` set when its metadata lacks a stage.
std::optional<Response> channel_response(const ChannelMeta& c, std::string& why);

}  // namespace lm::mseed
