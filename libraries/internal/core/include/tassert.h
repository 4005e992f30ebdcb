#pragma once

// The host assertion: reports the broken contract (expression, source path
// and line) through the message log and returns; it never aborts. The
// definition lives in the host library, which every program of the module
// links.
bool t_assert(const char* expression, const char* file, int line, bool flag = false);
