// What all commands share: how much is said, how things end, and how the program speaks.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace quaylink::cli {

// The program's exit statuses.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kUsage = 2;
inline constexpr int kInterrupted = 130;

// Ends a command: main prints the message and gives the status.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, int status = kFailure)
      : std::runtime_error(message), status_(status) {}
  int Status() const { return status_; }

 private:
  int status_;
};

struct Program {
  bool quiet = false;
  bool verbose = false;
  bool tellsEvents = false;  // on the standard output, as lines of JSON for programs

  // Writes whole lines to the standard output; fails when that cannot take them. What comes from a
  // device cannot steer a terminal there, nor can any string of the two below.
  void Print(std::string_view lines) const;
  // An error, on the standard error stream.
  void Complain(std::string_view message) const;
  // Something good to know, on the standard error stream; not for a quiet program.
  void Note(std::string_view message) const;
};

}  // namespace quaylink::cli
