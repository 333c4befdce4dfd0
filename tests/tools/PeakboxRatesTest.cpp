#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <valarray>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Numbers = std::valarray<double>;

/// What peakbox-rates leaves of one peak beside one of noise; uncertainties may be none.
std::string runRates(const Numbers& times, const Numbers& values, const Numbers& uncertainties) {
  std::ostringstream report, noise;
  report.precision(12);
  noise << "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n";
  for (std::size_t n = 0; n < times.size(); ++n) {
    report << "# SPECTRUM " << n + 1 << ": s\n# PARAMETERS: " << times[n] << "\n# Num\tLabel\tPos1\tPos2\tInt\n"
           << "  1\tA\"1\t8\t9\t" << values[n] << "\n  2\tnoise\t8\t9\t5\n\n";
    if (uncertainties.size() > 0) noise << n + 1 << '\t' << uncertainties[n] << "\t1\t1\t1\t5x3\ts\n";
  }
  return runExample({{"r", report.str()}, {"n", noise.str()}},
                    uncertainties.size() == 0 ? "peakbox-rates <r" : "peakbox-rates -n n r");
}

/// R, R_err, R_scaled, A, A_err and Chi2 of the minimum near R and A, by the method of Gauss and Newton.
Numbers minimise(const Numbers& t, const Numbers& values, const Numbers& uncertainties, double r, double a) {
  const Numbers weights = uncertainties.size() == 0 ? Numbers(1.0, t.size()) : Numbers(1.0 / uncertainties);
  double aa = 0, ar = 0, rr = 0, chi2 = 0;  // the first three: products of the derivatives by A and by R
  for (int k = 0; k < 200; ++k) {
    const Numbers byA = weights * std::exp(-r * t);
    const Numbers byR = -a * t * byA;
    const Numbers deviations = weights * values - a * byA;
    aa = (byA * byA).sum();
    ar = (byA * byR).sum();
    rr = (byR * byR).sum();
    chi2 = (deviations * deviations).sum();
    a += (rr * (byA * deviations).sum() - ar * (byR * deviations).sum()) / (aa * rr - ar * ar) / 2;
    r += (aa * (byR * deviations).sum() - ar * (byA * deviations).sum()) / (aa * rr - ar * ar) / 2;
  }
  const double scatter = std::sqrt(chi2 / 4);  // six values less two
  const double noise = (uncertainties.size() == 0 ? scatter : 1) / std::sqrt(aa * rr - ar * ar);
  const double excess = uncertainties.size() == 0 ? 1 : std::max(1.0, scatter);
  return {r, noise * std::sqrt(aa), noise * std::sqrt(aa) * excess, a, noise * std::sqrt(rr), chi2};
}

TEST(PeakboxRates, FindsTheLeastChi2) {
  const Numbers times{0.01, 0.05, 0.12, 0.25, 0.4, 0.6};
  const std::tuple<std::string, double, double, Numbers, Numbers, double> rows[] = {
      {"large deviations", 4.9, 700, times, Numbers(5, 6), 20},
      {"unequal uncertainties", 4.9, 100, times, {1, 9, 2, 7, 1, 4}, 3},
      {"negative, and repeats", 2, -7e5, {0, 1, 0.2, 0.2, 0.5, 0.1}, Numbers(2e4, 6), 2e4},
      {"in ms, far from 0, and large", 0.004, 7e24, {1000, 1050, 1100, 1200, 1300, 1500}, Numbers(1e21, 6), 1e21},
      {"from the scatter, and small", 4e3, 7e-6, {0, 1e-5, 5e-5, 1e-4, 2e-4, 3e-4}, {}, 1e-7},
      {"rises", -3, 50, times, Numbers(9, 6), 9},
      {"weak", 20, 8, times, Numbers(1, 6), 1},
  };
  for (const auto& [name, rate, amplitude, t, uncertainties, noise] : rows) {
    const Numbers values = amplitude * std::exp(-rate * t) + noise * Numbers{0.4, -1.2, 0.7, 1.1, -0.3, -0.8};
    const std::string end = runRates(t, values, uncertainties);
    std::istringstream fields(end.substr(end.find("A\"1") + 3));
    for (const double number : minimise(t, values, uncertainties, rate, amplitude)) {
      double printed = 0;
      fields >> printed;
      EXPECT_NEAR(printed / number, 1, 2e-5) << name << ": " << number << " in " << end;
    }
  }
}

TEST(PeakboxRates, RemarksOnWhatIsNoDecay) {
  const Numbers six{0, 1, 2, 3, 4, 5};
  const Numbers ten(10, 6);
  const std::tuple<std::string, Numbers, Numbers> rows[] = {
      {"", {500, 240, 130, 60, 30, -20}, ten},
      {"", {-500, -240, -120, -60, -30, 25}, ten},
      {"", {500, 350, 300, 290, 270, 280}, {}},
      {"no curve", {7, 7, 7, 7, 7, 7}, {}},
      {"no curve", {29, 20, -29, 5, 10, -3}, ten},
      {"changes sign: no decay", {-500, -200, 10, 150, 250, 300}, ten},
      {"changes sign: no decay", {-500, -200, 10, 150, 250, 300}, {}},
      {"grows", {10, 200, 350, 430, 460, 480}, ten},
      {"rate not determined", {500, 501, 510, 490, 500, 505}, ten},
      {"rate not determined", {500, 0, 5, -8, 3, -3}, ten},
      {"at the edge of what the parameters show", {5000, 35, 2, -8, 3, -3}, ten},
      {"at the edge of what the parameters show", {1e5, 99980, 99960, 99940, 99920, 99900}, ten},
      {"poor fit", {500, 350, 300, 290, 270, 280}, ten},
  };
  for (const auto& [remark, values, uncertainties] : rows) {
    const std::string end = runRates(six, values, uncertainties);
    EXPECT_TRUE(end.ends_with("\t" + remark + "\n")) << remark << ": " << end;
  }
}

TEST(PeakboxRates, SaysWhatIsWrongAndUnknown) {
  const std::string one = exampleTable("1: s\n# PARAMETERS: 1\n");
  const std::string out =
      "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark\n"
      "1\tA1\tnan\tnan\tnan\tnan\tnan\tnan\tnan\tfewer than three distinct parameters\n";
  const std::string usage = "usage: peakbox-rates [-n NOISE | -r] [-m MODEL] [-z SPECTRA] [-T TIME] [REPORT]\n";
  EXPECT_EQ(runExample({{"r", one}}, "peakbox-rates -m decay r"), outcome(0, "", "(no file)", out));
  EXPECT_EQ(runExample({{"r", one}}, "peakbox-rates -m cosine r"), outcome(2, usage));
  EXPECT_EQ(runExample({{"r", one}}, "peakbox-rates -n n -r r"), outcome(2, usage));
  EXPECT_EQ(runExample({{"r", exampleTable()}}, "peakbox-rates r"),
            outcome(1, "peakbox-rates: r: spectrum 1 has no parameter, and a fit needs one\n"));
}

}  // namespace
}  // namespace peakbox::test
