#pragma once

/// Puts the limits of a request on this process, which `execve` keeps: 60 s of processor time, 512
/// MiB of data, no core dump, each hard and soft, and an end by SIGALRM 60 s from now, however they
/// pass. Where what the process inherits is lower, that stays.
///
/// SIGALRM and SIGXCPU go back to their defaults and no signal stays blocked: whoever started this
/// process may have had them ignored, which `execve` keeps as well. As the default of SIGALRM is an
/// end without a core dump, it ends like SIGKILL also what waits for a dead network file system.
///
/// False, with the error in errno, when the system denies a limit.
bool setLimits();
