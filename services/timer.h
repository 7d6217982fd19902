// Time by the processor's time-stamp counter.
#pragma once

namespace orba::services {

// Seconds since the origin of the counter; only differences mean anything. The first call of the
// process measures the counter's rate, which takes a tenth of a second.
double timer_seconds() noexcept;

// That rate, in GHz.
double counter_rate() noexcept;

// Rate of the processor in GHz: as its brand string says, else by running it.
double clock_rate_for_header() noexcept;

// The parts of it. The brand's rate stands in the last 16 of its 48 bytes ("... @ 2.60GHz"); 0 when
// there is none.
double rate_in_brand(const char (&tail)[16]) noexcept;
double calibrate_rate() noexcept;

}  // namespace orba::services
