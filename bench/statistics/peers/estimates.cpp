// Eigen, OpenBLAS, Armadillo and the C++ standard library.
#include "bench/statistics/peers/estimates.h"

#define ARMA_DONT_USE_WRAPPER
#define ARMA_DONT_USE_OPENMP
#define EIGEN_DONT_PARALLELIZE
#include <cblas.h>

#include <Eigen/Core>
#include <algorithm>
#include <armadillo>
#include <cstdio>

namespace orba::bench {
namespace {

using Column = Eigen::Map<Eigen::VectorXd, Eigen::Aligned64>;
using ConstColumn = Eigen::Map<const Eigen::VectorXd>;
using Row = Eigen::Map<Eigen::RowVectorXd>;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using ByObservation = Eigen::Map<const RowMajor, Eigen::Aligned64>;

ConstColumn variable(const Sample& s, int64_t j) { return {s.x + j * s.n, s.n}; }
ByObservation observations(const Sample& s) { return {s.x, s.n, s.p}; }

// ---- Means and variances: from centred values, and from sums of squares as FAST does it

void mean_variance_centred(const Sample& s, double* out, double*) {
  const auto divisor = static_cast<double>(s.n - 1);
  if (s.contiguous()) {
    for (int64_t j = 0; j < s.p; ++j) {
      const auto x = variable(s, j);
      out[j] = x.mean();
      out[s.p + j] = (x.array() - out[j]).square().sum() / divisor;
    }
  } else {
    const auto x = observations(s);
    Row mean(out, s.p), variance(out + s.p, s.p);
    mean = x.colwise().mean();
    variance = (x.rowwise() - mean).colwise().squaredNorm() / divisor;
  }
}

void mean_variance_raw(const Sample& s, double* out, double*) {
  const auto n = static_cast<double>(s.n);
  Row mean(out, s.p), variance(out + s.p, s.p);
  if (s.contiguous()) {
    for (int64_t j = 0; j < s.p; ++j) {
      const auto x = variable(s, j);
      mean[j] = x.mean();
      variance[j] = x.squaredNorm();
    }
  } else {
    mean = observations(s).colwise().mean();
    variance = observations(s).colwise().squaredNorm();
  }
  variance = (variance - n * mean.cwiseAbs2()) / (n - 1);
}

void mean_variance_by_observation(const Sample& s, double* out, double*) {
  const auto x = observations(s);
  const auto n = static_cast<double>(s.n);
  Row mean(out, s.p), variance(out + s.p, s.p);
  mean.setZero();
  variance.setZero();
  for (int64_t i = 0; i < s.n; ++i) {
    mean += x.row(i);
    variance += x.row(i).cwiseAbs2();
  }
  mean /= n;
  variance = (variance - n * mean.cwiseAbs2()) / (n - 1);
}

// ---- Extremes

void extremes(const Sample& s, double* out, double*) {
  Row lowest(out, s.p), highest(out + s.p, s.p);
  if (s.contiguous()) {
    for (int64_t j = 0; j < s.p; ++j) {
      lowest[j] = variable(s, j).minCoeff();
      highest[j] = variable(s, j).maxCoeff();
    }
  } else {
    lowest = observations(s).colwise().minCoeff();
    highest = observations(s).colwise().maxCoeff();
  }
}

void extremes_by_observation(const Sample& s, double* out, double*) {
  const auto x = observations(s);
  Row lowest(out, s.p), highest(out + s.p, s.p);
  lowest = highest = x.row(0);
  for (int64_t i = 1; i < s.n; ++i) {
    lowest = lowest.cwiseMin(x.row(i));
    highest = highest.cwiseMax(x.row(i));
  }
}

// ---- Covariance

void covariance_openblas(const Sample& s, double* out, double* workspace) {
  openblas_set_num_threads(1);
  const int p = static_cast<int>(s.p), n = static_cast<int>(s.n);
  if (s.rows) {
    for (int64_t j = 0; j < s.p; ++j) {
      Column(workspace + j * s.n, s.n) = variable(s, j).array() - variable(s, j).mean();
    }
  } else {
    const auto x = observations(s);
    Eigen::RowVectorXd mean = Eigen::RowVectorXd::Zero(s.p);
    for (int64_t i = 0; i < s.n; ++i) mean += x.row(i);
    mean /= static_cast<double>(s.n);
    Eigen::Map<RowMajor>(workspace, s.n, s.p) = x.rowwise() - mean;
  }
  cblas_dsyrk(CblasColMajor, CblasUpper, s.rows ? CblasTrans : CblasNoTrans, p, n, 1.0 / (n - 1),
              workspace, s.rows ? n : p, 0.0, out, p);
}

void covariance_armadillo(const Sample& s, double* out, double*) {
  openblas_set_num_threads(1);
  const auto p = static_cast<arma::uword>(s.p), n = static_cast<arma::uword>(s.n);
  const arma::mat x(const_cast<double*>(s.x), n, p, false, true);
  arma::mat covariance(out, p, p, false, true);
  covariance = arma::cov(x);
}

// ---- Order statistics of one variable; the copy is some hundredth of the time of a sort

void sort(const Sample& s, double*, double* workspace) {
  std::copy_n(s.x, s.n, workspace);
  std::sort(workspace, workspace + s.n);
}

void select_nine(const Sample& s, double* out, double* workspace) {
  std::copy_n(s.x, s.n, workspace);
  double* from = workspace;
  for (int64_t k = 1; k <= 9; ++k) {
    double* at = workspace + k * (s.n - 1) / 10;
    std::nth_element(from, at, workspace + s.n);
    *out = *at;
    from = at;
  }
}

constexpr EstimatePeer kPeers[] = {
    {"mean_variance", "eigen_centred", true, true, mean_variance_centred},
    {"mean_variance", "eigen_raw", true, true, mean_variance_raw},
    {"mean_variance", "eigen_by_observation", false, true, mean_variance_by_observation},
    {"extremes", "eigen", true, true, extremes},
    {"extremes", "eigen_by_observation", false, true, extremes_by_observation},
    {"covariance", "openblas_dsyrk", true, true, covariance_openblas},
    {"covariance", "armadillo_cov", true, false, covariance_armadillo},
    {"nine_quantiles", "std_sort", true, false, sort},
    {"nine_quantiles", "std_nth_element", true, false, select_nine},
    {"sorted_observations", "std_sort", true, false, sort},
};

}  // namespace

[[gnu::visibility("default")]] EstimatePeers ORBA_PEER_ENTRY() {
  static char versions[256];
  std::snprintf(versions, sizeof versions, ", Eigen %d.%d.%d, Armadillo %d.%d.%d, %s",
                EIGEN_WORLD_VERSION, EIGEN_MAJOR_VERSION, EIGEN_MINOR_VERSION, ARMA_VERSION_MAJOR,
                ARMA_VERSION_MINOR, ARMA_VERSION_PATCH, openblas_get_config());
  return {kPeers, versions};
}

}  // namespace orba::bench
