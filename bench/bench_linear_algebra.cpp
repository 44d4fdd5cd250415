// Time per call of the dense matrix services at the orders crystallographic
// programs meet: 3 (cells and metrics) up to a few hundred (least squares).
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "support/eigen.h"
#include "support/linear_algebra.h"

namespace lmg = lorx_math_general;
using lmg::Matrix;

namespace {

template <class T>
Matrix<T> random_matrix(int n, bool symmetric) {
  std::mt19937 rng(static_cast<unsigned>(n));
  std::uniform_real_distribution<T> u(T(-1), T(1));
  Matrix<T> a(n, n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) a(i, j) = u(rng);
  if (symmetric)
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < j; ++i) a(i, j) = a(j, i);
  return a;
}

// LU decomposition and the inverse from it.
template <class T>
void BM_Inverse(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Matrix<T> a = random_matrix<T>(n, false);
  Matrix<T> c;
  bool singular = false;
  for (auto _ : state) {
    lmg::invert_matrix(a, c, singular);
    benchmark::DoNotOptimize(c.data());
  }
  if (singular) state.SkipWithError("singular");
}

template <class T>
void BM_Svd(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Matrix<T> a = random_matrix<T>(n, false);
  Matrix<T> u, v(n, n);
  std::vector<T> w(static_cast<std::size_t>(n));
  for (auto _ : state) {
    u = a;
    lmg::svdcmp(u, w, v);
    benchmark::DoNotOptimize(w.data());
  }
  if (lmg::err_mathgen) state.SkipWithError("no convergence");
}

// The eigenproblem exists in single precision only.
void BM_SymmetricEigen(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const Matrix<float> a = random_matrix<float>(n, true);
  Matrix<float> vec;
  std::vector<float> val(static_cast<std::size_t>(n));
  for (auto _ : state) {
    lmg::diagonalize_symm(a, n, val, &vec);
    benchmark::DoNotOptimize(val.data());
  }
  if (lmg::err_mathgen) state.SkipWithError("no convergence");
}

void orders(benchmark::internal::Benchmark* b) {
  for (int n : {3, 10, 50, 200}) b->Arg(n);
}

BENCHMARK(BM_Inverse<float>)->Name("lu_inverse_sp")->Apply(orders);
BENCHMARK(BM_Inverse<double>)->Name("lu_inverse_dp")->Apply(orders);
BENCHMARK(BM_Svd<float>)->Name("svd_sp")->Apply(orders);
BENCHMARK(BM_Svd<double>)->Name("svd_dp")->Apply(orders);
BENCHMARK(BM_SymmetricEigen)->Name("symmetric_eigen_sp")->Apply(orders);

}  // namespace

BENCHMARK_MAIN();
