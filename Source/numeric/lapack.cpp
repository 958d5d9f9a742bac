#include "numeric/lapack.h"

#include <dlfcn.h>

#include <cstddef>
#include <mutex>

namespace quintor::lapack {

namespace {

// gfortran passes the length of each character argument at the end.
using Len = std::size_t;
using Dsygv = void(const int*, const char*, const char*, const int*, double*, const int*, double*, const int*,
                   double*, double*, const int*, int*, Len, Len);
using Dsyevd = void(const char*, const char*, const int*, double*, const int*, double*, double*, const int*, int*,
                    const int*, int*, Len, Len);
using Dsytrd = void(const char*, const int*, double*, const int*, double*, double*, double*, double*, const int*,
                    int*, Len);
using Dstemr = void(const char*, const char*, const int*, double*, double*, const double*, const double*, const int*,
                    const int*, int*, double*, double*, const int*, const int*, int*, int*, double*, const int*, int*,
                    const int*, int*, Len, Len);
using Dormtr = void(const char*, const char*, const char*, const int*, const int*, const double*, const int*,
                    const double*, double*, const int*, double*, const int*, int*, Len, Len, Len);
using Dsyrk = void(const char*, const char*, const int*, const int*, const double*, const double*, const int*,
                   const double*, double*, const int*, Len, Len);
using Dsbev = void(const char*, const char*, const int*, const int*, double*, const int*, double*, double*,
                   const int*, double*, int*, Len, Len);
using Dgesv = void(const int*, const int*, double*, const int*, int*, double*, const int*, int*);
using Dgbsv = void(const int*, const int*, const int*, const int*, double*, const int*, int*, double*, const int*,
                   int*);
using Dgemm = void(const char*, const char*, const int*, const int*, const int*, const double*, const double*,
                   const int*, const double*, const int*, const double*, double*, const int*, Len, Len);
using SetNumThreads = void(int);

struct Library {
  void* handle = nullptr;
  Dsygv* dsygv = nullptr;
  Dsyevd* dsyevd = nullptr;
  Dsyrk* dsyrk = nullptr;
  Dsytrd* dsytrd = nullptr;
  Dstemr* dstemr = nullptr;
  Dormtr* dormtr = nullptr;
  Dsbev* dsbev = nullptr;
  Dgesv* dgesv = nullptr;
  Dgbsv* dgbsv = nullptr;
  Dgemm* dgemm = nullptr;
};

template <class F>
F* Symbol(void* handle, const char* name) {
  return reinterpret_cast<F*>(dlsym(handle, name));
}

const Library& Load() {
  static Library lib;
  static std::once_flag once;
  std::call_once(once, [] {
    for (const char* name : {"liblapack.so.3", "libopenblas.so.0", "liblapack.so"}) {
      lib.handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
      if (lib.handle) break;
    }
    if (!lib.handle) return;
    lib.dsygv = Symbol<Dsygv>(lib.handle, "dsygv_");
    lib.dsyevd = Symbol<Dsyevd>(lib.handle, "dsyevd_");
    lib.dsyrk = Symbol<Dsyrk>(lib.handle, "dsyrk_");
    lib.dsytrd = Symbol<Dsytrd>(lib.handle, "dsytrd_");
    lib.dstemr = Symbol<Dstemr>(lib.handle, "dstemr_");
    lib.dormtr = Symbol<Dormtr>(lib.handle, "dormtr_");
    lib.dsbev = Symbol<Dsbev>(lib.handle, "dsbev_");
    lib.dgesv = Symbol<Dgesv>(lib.handle, "dgesv_");
    lib.dgbsv = Symbol<Dgbsv>(lib.handle, "dgbsv_");
    lib.dgemm = Symbol<Dgemm>(lib.handle, "dgemm_");  // from the BLAS that LAPACK loads
    if (auto* setThreads = Symbol<SetNumThreads>(lib.handle, "openblas_set_num_threads")) setThreads(1);
  });
  return lib;
}

template <class F>
F& Routine(F* Library::*member, const char* name) {
  F* f = Load().*member;
  if (!f) throw Unavailable(std::string("LAPACK routine ") + name + " not found (install liblapack3 or libopenblas0)");
  return *f;
}

}  // namespace

int dsygv(int itype, char jobz, char uplo, int n, double* a, int lda, double* b, int ldb, double* w, double* work,
          int lwork) {
  int info = 0;
  Routine(&Library::dsygv, "DSYGV")(&itype, &jobz, &uplo, &n, a, &lda, b, &ldb, w, work, &lwork, &info, 1, 1);
  return info;
}

int dsyevd(char jobz, char uplo, int n, double* a, int lda, double* w, double* work, int lwork, int* iwork,
           int liwork) {
  int info = 0;
  Routine(&Library::dsyevd, "DSYEVD")(&jobz, &uplo, &n, a, &lda, w, work, &lwork, iwork, &liwork, &info, 1, 1);
  return info;
}

int dsytrd(char uplo, int n, double* a, int lda, double* d, double* e, double* tau, double* work, int lwork) {
  int info = 0;
  Routine(&Library::dsytrd, "DSYTRD")(&uplo, &n, a, &lda, d, e, tau, work, &lwork, &info, 1);
  return info;
}

int dstemr(char jobz, char range, int n, double* d, double* e, double vl, double vu, int il, int iu, int* m,
           double* w, double* z, int ldz, int nzc, int* isuppz, int* tryrac, double* work, int lwork, int* iwork,
           int liwork) {
  int info = 0;
  Routine(&Library::dstemr, "DSTEMR")(&jobz, &range, &n, d, e, &vl, &vu, &il, &iu, m, w, z, &ldz, &nzc, isuppz, tryrac,
                                      work, &lwork, iwork, &liwork, &info, 1, 1);
  return info;
}

int dormtr(char side, char uplo, char trans, int m, int n, const double* a, int lda, const double* tau, double* c,
           int ldc, double* work, int lwork) {
  int info = 0;
  Routine(&Library::dormtr, "DORMTR")(&side, &uplo, &trans, &m, &n, a, &lda, tau, c, &ldc, work, &lwork, &info, 1, 1,
                                      1);
  return info;
}

void dsyrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda, double beta, double* c,
           int ldc) {
  Routine(&Library::dsyrk, "DSYRK")(&uplo, &trans, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1);
}

int dsbev(char jobz, char uplo, int n, int kd, double* ab, int ldab, double* w, double* z, int ldz, double* work) {
  int info = 0;
  Routine(&Library::dsbev, "DSBEV")(&jobz, &uplo, &n, &kd, ab, &ldab, w, z, &ldz, work, &info, 1, 1);
  return info;
}

void dgemm(char transa, char transb, int m, int n, int k, double alpha, const double* a, int lda, const double* b,
           int ldb, double beta, double* c, int ldc) {
  Routine(&Library::dgemm, "DGEMM")(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

int dgesv(int n, int nrhs, double* a, int lda, int* ipiv, double* b, int ldb) {
  int info = 0;
  Routine(&Library::dgesv, "DGESV")(&n, &nrhs, a, &lda, ipiv, b, &ldb, &info);
  return info;
}

int dgbsv(int n, int kl, int ku, int nrhs, double* ab, int ldab, int* ipiv, double* b, int ldb) {
  int info = 0;
  Routine(&Library::dgbsv, "DGBSV")(&n, &kl, &ku, &nrhs, ab, &ldab, ipiv, b, &ldb, &info);
  return info;
}

}  // namespace quintor::lapack
