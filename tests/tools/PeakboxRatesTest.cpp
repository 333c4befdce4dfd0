#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <valarray>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Numbers = std::valarray<double>;

/// What peakbox-rates with these options leaves of one peak beside one of noise; uncertainties may be none.
std::string runRates(const Numbers& times, const Numbers& values, const Numbers& uncertainties,
                     const std::string& options = "") {
  std::ostringstream report, noise;
  report.precision(12);
  noise << "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n";
  for (std::size_t n = 0; n < times.size(); ++n) {
    report << "# SPECTRUM " << n + 1 << ": s\n# PARAMETERS: " << times[n] << "\n# Num\tLabel\tPos1\tPos2\tInt\n"
           << "  1\tA\"1\t8\t9\t" << values[n] << "\n  2\tnoise\t8\t9\t5\n\n";
    if (uncertainties.size() > 0) noise << n + 1 << '\t' << uncertainties[n] << "\t1\t1\t1\t5x3\ts\n";
  }
  const std::string source = uncertainties.size() == 0 ? "<r" : "-n n r";
  return runExample({{"r", report.str()}, {"n", noise.str()}}, "peakbox-rates " + options + source);
}

void expectNumbers(const std::string& name, const std::string& end, const Numbers& numbers) {
  std::istringstream fields(end.substr(end.find("A\"1") + 3));
  for (const double number : numbers) {
    double printed = 0;
    fields >> printed;
    EXPECT_NEAR(printed / number, 1, 2e-5) << name << ": " << number << " in " << end;
  }
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
    expectNumbers(name, runRates(t, values, uncertainties), minimise(t, values, uncertainties, rate, amplitude));
  }
}

TEST(PeakboxRates, FitsRecoveriesAsScipyDoes) {
  // Behind the uncertainties what scipy.optimize.curve_fit finds from near the truth: R, R_err, R_scaled (calculated
  // from Chi2), A, A_err, B, B_err, Chi2.
  const std::tuple<std::string, Numbers, Numbers, Numbers, Numbers> rows[] = {
      {"inversion, unequal uncertainties",
       {0.02, 0.1, 0.3, 0.6, 1, 1.5},
       {-905, -640, -90, 432, 741, 910},
       {10, 20, 10, 30, 10, 10},
       {1.98833, 0.0482149, 0.0482149, 1999.42, 14.9242, 1013.23, 14.7962, 1.42886}},
      {"saturation, in ms and far from 0, with repeats, large",
       {1000, 1100, 1000, 1300, 1900, 1600},
       {1e21, 2.1e23, -3e21, 4.4e23, 8.1e23, 6.9e23},
       Numbers(1e22, 6),
       {0.00219205, 0.000134719, 0.000214036, 8.36477e+24, 9.38601e+23, 9.38583e+23, 2.5897e+22, 7.57241}},
      {"decay to a plateau, from the scatter, small",
       {0, 1e-5, 3e-5, 6e-5, 1e-4, 2e-4},
       {9e-6, 7.7e-6, 6.2e-6, 4.5e-6, 3.6e-6, 3.1e-6},
       {},
       {22261.4, 1264.95, 1264.95, -5.98633e-06, 1.26529e-07, 2.99366e-06, 1.08198e-07, 3.38345e-14}},
  };
  for (const auto& [name, times, values, uncertainties, expected] : rows) {
    expectNumbers(name, runRates(times, values, uncertainties, "-m recovery "), expected);
  }
}

TEST(PeakboxRates, RemarksOnWhatIsNoCurve) {
  const Numbers six{0, 1, 2, 3, 4, 5};
  const Numbers ten(10, 6);
  const std::string edge = "at the edge of what the parameters show";
  const std::string toPlateau = "-m recovery ";
  const std::tuple<std::string, std::string, Numbers, Numbers> rows[] = {
      {"", "", {500, 240, 130, 60, 30, -20}, ten},
      {"", "", {-500, -240, -120, -60, -30, 25}, ten},
      {"", "", {500, 350, 300, 290, 270, 280}, {}},
      {"", "no curve", {7, 7, 7, 7, 7, 7}, {}},
      {"", "no curve", {29, 20, -29, 5, 10, -3}, ten},
      {"", "changes sign: no decay", {-500, -200, 10, 150, 250, 300}, ten},
      {"", "changes sign: no decay", {-500, -200, 10, 150, 250, 300}, {}},
      {"", "grows", {10, 200, 350, 430, 460, 480}, ten},
      {"", "rate not determined", {500, 501, 510, 490, 500, 505}, ten},
      {"", "rate not determined", {500, 0, 5, -8, 3, -3}, ten},
      {"", edge, {5000, 35, 2, -8, 3, -3}, ten},
      {"", edge, {1e5, 99980, 99960, 99940, 99920, 99900}, ten},
      {"", "poor fit", {500, 350, 300, 290, 270, 280}, ten},
      {toPlateau, "", {-500, -200, 10, 150, 250, 300}, ten},
      {toPlateau, "", {10, 200, 350, 430, 460, 480}, ten},
      {toPlateau, "no curve", {500, 501, 510, 490, 500, 505}, ten},
      {toPlateau, "rate not determined", {10, 112, 198, 309, 402, 497}, ten},
      {toPlateau, edge, {0, 10, 40, 100, 220, 460}, ten},
      {toPlateau, "poor fit", {-500, -200, 10, 150, 350, 300}, ten},
  };
  for (const auto& [options, remark, values, uncertainties] : rows) {
    const std::string end = runRates(six, values, uncertainties, options);
    EXPECT_TRUE(end.ends_with("\t" + remark + "\n")) << options << remark << ": " << end;
  }
  const std::string end = runRates({0, 1, 1, 2}, {-500, -200, -190, 10}, {10, 10, 10, 10}, toPlateau);
  EXPECT_TRUE(end.ends_with("\t1\tfewer than four distinct parameters\n")) << end;
}

TEST(PeakboxRates, TakesRatios) {
  // The references 100 +- 10 and 90 +- 20 weigh 4 to 1: 98 +- 8.94427, whose square is 80. The ratio of 49 +- 5 is 0.5,
  // its error the root of 25 + 80 / 4 over 98; an effective rate is ln(2) over the time, its error twice the ratio's.
  const Numbers times{0, 50, 0, 3};
  const Numbers uncertainties{10, 5, 20, 5};
  const std::string ratioHeader = "Num\tLabel\tSpectrum\tParameter\tRatio\tRatio_err\tRemark\n";
  const std::string rateHeader = "Num\tLabel\tSpectrum\tParameter\tR2eff\tR2eff_err\tRemark\n";
  const std::string half = "1\tA\"1\t2\t50\t0.5\t0.0684511\t";
  const std::string turned = "1\tA\"1\t4\t3\t-0.5\t0.0684511\t";
  const std::tuple<std::string, Numbers, std::string> rows[] = {
      {"-m ratio -z 3,1 ", {100, 49, 90, -49}, ratioHeader + half + "\n" + turned + "\n"},
      {"-m r2eff -T 0.5 -z 1,3 ",
       {100, 49, 90, -49},
       rateHeader + "1\tA\"1\t2\t50\t1.38629\t0.273804\t\n1\tA\"1\t4\t3\tnan\tnan\tnot above 0\n"},
      // References in the noise: 8 + 2 in 5, the ratio of 6.8 is 1, with an error of the root of 25 + 80 over 6.8; that
      // of 50 is 7.35294, with the root of 25 + 80 times its square over 6.8.
      {"-m ratio -z 1,3,1 ",
       {8, 6.8, 2, 50},
       ratioHeader + "1\tA\"1\t2\t50\t1\t1.5069\tno curve\n1\tA\"1\t4\t3\t7.35294\t9.69948\tno curve\n"},
  };
  for (const auto& [options, values, table] : rows) {
    const std::string end = runRates(times, values, uncertainties, options);
    EXPECT_NE(end.find("\n" + table), std::string::npos) << options << end;
  }
}

TEST(PeakboxRates, SaysWhatIsWrongAndUnknown) {
  const std::string one = exampleTable("1: s\n# PARAMETERS: 1\n");
  const std::string usage = "usage: peakbox-rates [-n NOISE | -r] [-m MODEL] [-z SPECTRA] [-T TIME] [REPORT]\n";
  const std::string absent = "peakbox-rates: r: there is no spectrum ";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"-m decay r", one, ""},
      {"r", exampleTable(), "peakbox-rates: r: spectrum 1 has no parameter, and a fit needs one\n"},
      {"-m ratio -z 1 r", one, "peakbox-rates: r: -m ratio needs -n NOISE (of peakbox-noise) or -r (repeats)\n"},
      {"-n n -m ratio -z 0 r", one, absent + "0, which -z names\n"},
      {"-n n -m r2eff -T 1 -z 1,2 r", one, absent + "2, which -z names\n"},
      {"-n n -m ratio -z 99999999999999999999999 r", one, absent + "1e+23, which -z names\n"},
      {"-n n -m ratio -z 1 r", one, "peakbox-rates: r: -z leaves no spectrum\n"},
      {"-m cosine r", one, usage},
      {"-n n -r r", one, usage},
      {"-z 1 r", one, usage},
      {"-m recovery -T 1 r", one, usage},
      {"-n n -m ratio r", one, usage},
      {"-n n -m ratio -z 1, r", one, usage},
      {"-n n -m ratio -z 1 -T 1 r", one, usage},
      {"-n n -m r2eff -z 1 r", one, usage},
      {"-n n -m r2eff -T 0 -z 1 r", one, usage},
      {"-n n -m r2eff -T 40ms -z 1 r", one, usage},
  };
  const std::string out =
      "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark\n"
      "1\tA1\tnan\tnan\tnan\tnan\tnan\tnan\tnan\tfewer than three distinct parameters\n";
  const std::string noise = "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n1\t5\t1\t1\t1\t1x1\ts\n";
  for (const auto& [arguments, report, err] : rows) {
    const int status = err.empty() ? 0 : err == usage ? 2 : 1;
    EXPECT_EQ(runExample({{"r", report}, {"n", noise}}, "peakbox-rates " + arguments),
              outcome(status, err, "(no file)", err.empty() ? out : ""))
        << arguments;
  }
}

}  // namespace
}  // namespace peakbox::test
