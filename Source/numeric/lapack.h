// LAPACK, loaded when a computation first needs it. Most batch runs need
// none, and loading OpenBLAS costs every start a few milliseconds (its
// thread pool); once loaded it runs on one thread, so that it never spins
// beside the program's own threads. The routines take their arguments as the Fortran ones do and return
// INFO (0 on success).
#pragma once

#include <stdexcept>

namespace quintor::lapack {

// No LAPACK library could be loaded (liblapack.so.3 or libopenblas.so.0).
struct Unavailable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

int dsygv(int itype, char jobz, char uplo, int n, double* a, int lda, double* b, int ldb, double* w, double* work,
          int lwork);
int dsyevd(char jobz, char uplo, int n, double* a, int lda, double* w, double* work, int lwork, int* iwork,
           int liwork);
// The three steps of a symmetric eigenproblem: reduction to a tridiagonal
// matrix, its eigenpairs by relatively robust representations (range 'I':
// the il-th to iu-th lowest; tryrac a Fortran LOGICAL), and the
// back-transformation of the eigenvectors.
int dsytrd(char uplo, int n, double* a, int lda, double* d, double* e, double* tau, double* work, int lwork);
int dstemr(char jobz, char range, int n, double* d, double* e, double vl, double vu, int il, int iu, int* m,
           double* w, double* z, int ldz, int nzc, int* isuppz, int* tryrac, double* work, int lwork, int* iwork,
           int liwork);
int dormtr(char side, char uplo, char trans, int m, int n, const double* a, int lda, const double* tau, double* c,
           int ldc, double* work, int lwork);
// Eigenvalues (jobz 'N') of a symmetric band matrix with kd off-diagonals.
int dsbev(char jobz, char uplo, int n, int kd, double* ab, int ldab, double* w, double* z, int ldz, double* work);
// BLAS matrix product C = alpha op(A) op(B) + beta C (column-major).
void dgemm(char transa, char transb, int m, int n, int k, double alpha, const double* a, int lda, const double* b,
           int ldb, double beta, double* c, int ldc);
// BLAS rank-k update C = alpha op(A) op(A)^T + beta C of one triangle (uplo) of C.
void dsyrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda, double beta, double* c,
           int ldc);
int dgesv(int n, int nrhs, double* a, int lda, int* ipiv, double* b, int ldb);
int dgbsv(int n, int kl, int ku, int nrhs, double* ab, int ldab, int* ipiv, double* b, int ldb);

}  // namespace quintor::lapack
