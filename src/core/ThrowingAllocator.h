// ACE's strings, arrays, queues and maps take their memory from the
// process-wide ACE allocator, and when it has none they mostly carry on
// silently: an array keeps its old size, a string stays empty, and a string
// concatenation writes through a null buffer. While installed, this
// allocator throws std::bad_alloc instead, which every export turns into
// its allocation-failure status, so no call goes on with a half-built value.
#pragma once

namespace throwing_allocator {
// Makes the throwing allocator ACE's process-wide one (at library load).
void install();
// Gives ACE back the allocator it had before install (at library unload).
void remove();
} // namespace throwing_allocator
