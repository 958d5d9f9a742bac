// How a run stops early: the exit statuses of the program and the exception
// that carries one to the end of the run.
#pragma once

#include <stdexcept>

namespace quintor {

// Exit statuses of the program.
namespace exit_status {
inline constexpr int Ok = 0;
inline constexpr int ReadError = 1;      // a field that can not be read, a bad option value
inline constexpr int Limit = 2;          // too many cycles or atoms
inline constexpr int NoInput = 3;        // the input file is missing or can not be read
inline constexpr int NoCoordinates = 4;  // no coordinates, and the user chose to exit
inline constexpr int CanNotWrite = 5;    // the MainLog can not be created
inline constexpr int Numeric = 6;        // a computation failed ("too many iterations in jacobi")
inline constexpr int Internal = 7;       // anything else that went wrong inside the program
inline constexpr int NoDisplay = 8;      // a windowed run without a display to open its windows on
}  // namespace exit_status

// Stops the run after its message has been written: the MainLog keeps what
// was written, and the process ends with `status` (never 0).
struct RunStop : std::runtime_error {
  explicit RunStop(int status) : std::runtime_error("run stopped"), status(status) {}
  int status;
};

}  // namespace quintor
