#pragma once
// An event of one unit built by hand, its output directory a fresh temporary one, for driving the
// channel registry and the trace writer in-process.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/channel.hpp"
#include "model/records.hpp"
#include "output/asc_trace.hpp"
#include "pktkit/packet_builder.hpp"
#include "run/exit.hpp"
#include "run/globals.hpp"
#include "run/text.hpp"
#include "support/e2e.hpp"

namespace chn_test {

// Frees the event's channel ring (closing the trace files, as the process exit would).
inline void free_channels(lm::Evt& e) {
  lm::CHNLST_T* c = e.chn;
  if (!c) return;
  c->prv->nxt = nullptr;
  while (c) {
    lm::CHNLST_T* next = c->nxt;
    delete c;
    c = next;
  }
  e.chn = nullptr;
}

// The exit status of a fatal end inside f, or -1 when f returned.
template <class F>
int exit_status(F f) {
  try {
    f();
  } catch (const lm::RunExit& e) {
    return e.status;
  }
  return -1;
}

// Channel numbers around the ring, from `from`; fails when the back links disagree.
inline std::vector<unsigned> ring_channels(lm::CHNLST_T* from) {
  std::vector<unsigned> out;
  lm::CHNLST_T* c = from;
  do {
    out.push_back(c->channel);
    EXPECT_EQ(c->nxt->prv, c);
    c = c->nxt;
  } while (c != from && out.size() < 200);
  return out;
}

class ChnWorld : public testing::Test {
 protected:
  void SetUp() override {
    lm::reset_globals();
    ASSERT_TRUE(lm::set_text(lm::G.DirOut, tmp.str() + "/"));
    unit.unit_id = 0x9A3F;
    evt.unit = &unit;
    evt.unit_id = unit.unit_id;
    evt.evt = 42;
    evt.rate = 100.0f;
    evt.pkt_eh = 1;
  }
  void TearDown() override {
    free_channels(evt);
    lm::reset_globals();
  }

  // A DT packet of the event with 32-bit samples.
  pktkit::Packet dt(pktkit::PktTime t, unsigned channel, std::vector<std::int32_t> samples, unsigned seq = 1,
                    unsigned stream = 0) {
    return pktkit::make_dt32(unit.unit_id, t, seq, evt.evt, stream, channel, samples);
  }
  // Chn_find for the packet, then its samples written as the conversion loop would.
  lm::CHNLST_T* feed(const pktkit::Packet& p, const std::vector<std::int32_t>& samples) {
    lm::CHNLST_T* c = lm::Chn_find(&evt, p.data());
    lm::Asc_data_out(c, samples.data(), static_cast<std::uint16_t>(samples.size()));
    return c;
  }
  // What Evt_remove does to each trace file: close, re-open for update, final header, close.
  void finish_files() {
    if (!evt.chn) return;
    lm::CHNLST_T* c = evt.chn;
    do {
      lm::Chn_file_close(c);
      if (lm::Chn_file_open(c, "r+b")) {
        lm::Asc_data_close(c);
        lm::Chn_file_close(c);
      }
      c = c->nxt;
    } while (c != evt.chn);
  }
  std::string dir() const { return tmp.str() + "/"; }

  e2e::TempDir tmp;
  lm::UNIT_T unit;
  lm::Evt evt;
};

}  // namespace chn_test
