#pragma once

// How long a test waits for what another process is to do: sanitizers and a busy machine are slow.
inline constexpr int patienceMilliseconds = 30'000;
