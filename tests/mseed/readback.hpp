#pragma once
// Reading an export back through independent libraries: the StationXML through libxml2 (and xmllint's
// schema check), the miniSEED records through libmseed.
#include <gtest/gtest.h>
#include <libmseed.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <filesystem>
#include <numbers>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace readback {

// xmllint's verdict against the FDSN schema; a missing schema is a failure, not a skip.
inline void expect_valid(const std::string& file) {
  const std::string xsd = LM_SOURCE_DIR "/../shared/schemas/fdsn-station-1.2.xsd";
  ASSERT_TRUE(std::filesystem::exists(xsd)) << "the StationXML schema is missing: " << xsd;
  std::FILE* p = ::popen(("xmllint --noout --schema '" + xsd + "' '" + file + "' 2>&1").c_str(), "r");
  ASSERT_NE(p, nullptr);
  std::string out;
  char buf[512];
  while (std::fgets(buf, sizeof buf, p)) out += buf;
  const int status = ::pclose(p);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << out;
}

// The document parsed by libxml2 and queried with XPath, "s:" the StationXML namespace.
class Doc {
 public:
  explicit Doc(const std::string& file) : doc_(xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET)) {
    if (doc_) ctx_ = xmlXPathNewContext(doc_);
    if (ctx_) xmlXPathRegisterNs(ctx_, BAD_CAST "s", BAD_CAST "http://www.fdsn.org/xml/station/1");
  }
  ~Doc() {
    if (ctx_) xmlXPathFreeContext(ctx_);
    if (doc_) xmlFreeDoc(doc_);
  }
  bool parsed() const { return ctx_ != nullptr; }
  double num(const std::string& path) const { return eval("number(" + path + ")", false).second; }
  std::string str(const std::string& path) const { return eval("string(" + path + ")", true).first; }
  int count(const std::string& path) const { return static_cast<int>(eval("count(" + path + ")", false).second); }
  // The stage's transfer function |A0 H(i 2 pi fn)| from the values in the document.
  double normalised_gain(const std::string& pz) const {
    const std::complex<double> s(0, 2 * std::numbers::pi * num(pz + "/s:NormalizationFrequency"));
    std::complex<double> h = num(pz + "/s:NormalizationFactor");
    for (int i = 1; i <= count(pz + "/s:Zero"); ++i) h *= s - root(pz + "/s:Zero[" + std::to_string(i) + "]");
    for (int i = 1; i <= count(pz + "/s:Pole"); ++i) h /= s - root(pz + "/s:Pole[" + std::to_string(i) + "]");
    return std::abs(h);
  }
  std::complex<double> root(const std::string& path) const { return {num(path + "/s:Real"), num(path + "/s:Imaginary")}; }

 private:
  std::pair<std::string, double> eval(const std::string& expr, bool text) const {
    xmlXPathObjectPtr o = ctx_ ? xmlXPathEvalExpression(BAD_CAST expr.c_str(), ctx_) : nullptr;
    if (!o) return {"", NAN};
    std::pair<std::string, double> r{"", o->floatval};
    if (text && o->stringval) r.first = reinterpret_cast<const char*>(o->stringval);
    xmlXPathFreeObject(o);
    return r;
  }
  xmlDocPtr doc_ = nullptr;
  xmlXPathContextPtr ctx_ = nullptr;
};

// A continuous run of samples as libmseed joins the records: codes, first sample, rate, samples.
struct Trace {
  std::string id;  // NET.STA.LOC.CHA
  hptime_t start = 0;
  double rate = 0;
  std::vector<std::int32_t> samples;
  bool operator==(const Trace&) const = default;
};

// Every record of the files, joined into traces where they are contiguous (libmseed's own
// tolerance), sorted by codes and time.
inline std::vector<Trace> read_traces(const std::vector<std::string>& files) {
  MSTraceGroup* g = mst_initgroup(nullptr);
  for (const std::string& f : files) {
    MSRecord* msr = nullptr;
    while (ms_readmsr(&msr, f.c_str(), 0, nullptr, nullptr, 1, 1, 0) == MS_NOERROR)
      mst_addmsrtogroup(g, msr, 1, -1.0, -1.0);
    ms_readmsr(&msr, nullptr, 0, nullptr, nullptr, 0, 0, 0);
  }
  std::vector<Trace> out;
  for (MSTrace* t = g->traces; t; t = t->next) {
    Trace r{std::string(t->network) + "." + t->station + "." + t->location + "." + t->channel, t->starttime,
            t->samprate, {}};
    const auto* s = static_cast<const std::int32_t*>(t->datasamples);
    if (t->sampletype == 'i') r.samples.assign(s, s + t->numsamples);
    out.push_back(std::move(r));
  }
  mst_freegroup(&g);
  std::sort(out.begin(), out.end(), [](const Trace& a, const Trace& b) {
    return std::tie(a.id, a.start) < std::tie(b.id, b.start);
  });
  return out;
}

// A record's first and last sample times, as libmseed reads them.
struct RecordSpan {
  hptime_t start, last;
};
inline std::vector<RecordSpan> record_spans(const std::string& file) {
  std::vector<RecordSpan> out;
  MSRecord* msr = nullptr;
  while (ms_readmsr(&msr, file.c_str(), 0, nullptr, nullptr, 1, 0, 0) == MS_NOERROR)
    out.push_back({msr->starttime, msr_endtime(msr)});
  ms_readmsr(&msr, nullptr, 0, nullptr, nullptr, 0, 0, 0);
  return out;
}

}  // namespace readback
