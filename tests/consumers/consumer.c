/* An outside program in plain C: all four forms of a call, the mode and the status. */
#include <orba.h>
#include <stdio.h>

#define CHECK(condition) \
  if (!(condition)) return printf("consumer.c:%d: %s\n", __LINE__, #condition), 1

int main(void) {
  const double a[3] = {1.0, 2.0, 3.0}, b[3] = {0.5, 0.25, -3.0};
  const float f[2] = {1.5f, -2.0f};
  const KamComplex16 u[1] = {{1.0, 2.0}}, v[1] = {{3.0, -4.0}};
  const int32_t n = 3;
  const uint32_t mode = KAM_LA | KAM_ERRMODE_IGNORE;
  double y[3] = {0}, z[3] = {0};
  float g[2];
  KamComplex16 w[1];

  vdAdd(n, a, b, y);
  CHECK(y[0] == 1.5 && y[1] == 2.25 && y[2] == 0.0);
  vmdadd(&n, a, b, z, &mode);
  CHECK(z[0] == y[0] && z[1] == y[1] && z[2] == y[2]);
  vsAdd(2, f, f, g);
  CHECK(g[0] == 3.0f && g[1] == -4.0f);
  vzAdd(1, u, v, w);
  CHECK(w[0].real == 4.0 && w[0].imag == -2.0);
  CHECK(kamGetErrStatus() == KAM_STATUS_OK);
  CHECK((kamGetMode() & KAM_ACCURACY_MASK) == KAM_HA);
  puts("C consumer: ok");
  return 0;
}
