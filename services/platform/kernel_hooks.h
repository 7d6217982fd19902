// What code that is built for one processor class may use of the platform.
#pragma once

namespace orba::services::platform {

// One pointer per thread, null at the start of a thread. initial-exec: one load off the thread
// register, no call (the few bytes fit the surplus that the loader keeps for late-loaded modules).
extern thread_local constinit void* thread_slot __attribute__((tls_model("initial-exec")));

}  // namespace orba::services::platform
