// How the rows of functions.def expand.
//
// Define ORBA_KAM_FUNCTION(Name, name, shape, types, kernels, call) and include functions.def to get
// one expansion per row; with ORBA_KAM_TYPES(types)(X, ...) a row expands to X(t, ...) per element
// type t. The preprocessor also reads this file to make the linker's export list, so it holds macros
// only.
#ifndef ORBA_VECTOR_FUNCTION_TABLE_H
#define ORBA_VECTOR_FUNCTION_TABLE_H

#define ORBA_KAM_PASTE_(a, b) a##b
#define ORBA_KAM_PASTE(a, b) ORBA_KAM_PASTE_(a, b)

#define ORBA_KAM_TYPES(types) ORBA_KAM_PASTE(ORBA_KAM_TYPES_, types)
#define ORBA_KAM_TYPES_s(X, ...) X(s, __VA_ARGS__)
#define ORBA_KAM_TYPES_d(X, ...) X(d, __VA_ARGS__)
#define ORBA_KAM_TYPES_c(X, ...) X(c, __VA_ARGS__)
#define ORBA_KAM_TYPES_z(X, ...) X(z, __VA_ARGS__)
#define ORBA_KAM_TYPES_sd(X, ...) X(s, __VA_ARGS__) X(d, __VA_ARGS__)
#define ORBA_KAM_TYPES_cz(X, ...) X(c, __VA_ARGS__) X(z, __VA_ARGS__)
#define ORBA_KAM_TYPES_sdcz(X, ...) \
  ORBA_KAM_TYPES_sd(X, __VA_ARGS__) ORBA_KAM_TYPES_cz(X, __VA_ARGS__)

#endif
