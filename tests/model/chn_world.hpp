#pragma once
// An event of one unit built by hand, writing into a fresh temporary directory, for driving the
// channel registry and the trace writer in-process.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/channel.hpp"
#include "model/event.hpp"
#include "model/ring.hpp"
#include "output/asc_trace.hpp"
#include "run/globals.hpp"
#include "run/text.hpp"
#include "support/e2e.hpp"

class ChnWorld : public testing::Test {
 protected:
  void SetUp() override {
    lm::reset_globals();
    ASSERT_TRUE(lm::set_text(lm::G.DirOut, tmp.str() + "/"));
    fresh();
  }
  void TearDown() override {
    if (evt) lm::Evt_remove(evt);
    lm::reset_globals();
  }
  // Ends the current event as the conversion does (final headers, records freed), then opens another.
  void fresh() {
    if (evt) lm::Evt_remove(evt);
    evt = new lm::Evt;
    lm::ring_init(evt);
    evt->unit = &unit;
    evt->unit_id = unit.unit_id = 0x9A3F;
    evt->evt = 42;
    evt->rate = 100.0f;
    evt->pkt_eh = 1;
  }
  // Chn_find for a DT packet with 32-bit samples, then its samples written as the conversion loop does.
  lm::CHNLST_T* feed(pktkit::PktTime t, unsigned channel, const std::vector<std::int32_t>& s) {
    const auto p = pktkit::make_dt32(unit.unit_id, t, 1, evt->evt, 0, channel, s);
    lm::CHNLST_T* c = lm::Chn_find(evt, p.data());
    lm::Asc_data_out(c, s.data(), static_cast<std::uint16_t>(s.size()));
    return c;
  }

  e2e::TempDir tmp;
  lm::UNIT_T unit;
  lm::Evt* evt = nullptr;
};
