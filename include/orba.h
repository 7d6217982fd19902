/* Orba: vector numerics for 64-bit x86. */
#ifndef ORBA_H
#define ORBA_H

#include "orba_kam.h"
#include "orba_rau.h"

#endif
