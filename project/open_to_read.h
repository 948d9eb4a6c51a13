#pragma once

/// Opens a file for reading and returns the descriptor, or -1. A FIFO is opened without waiting for
/// a writer; a file on which another process has a lease, once that has given it up.
int openToRead(const char* path);
