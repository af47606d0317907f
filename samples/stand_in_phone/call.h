// One call of an entry point, from its beginning to its end.
#pragma once

#include <algorithm>
#include <sstream>

#include "stand_in_phone/stand_in_phone.h"

namespace quaylink::stand_in {

inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kFailure = 7;

// While it lives the phone's own code runs, of which those who set it up may want to be told.
class PhoneCode {
 public:
  PhoneCode();
  ~PhoneCode();
  PhoneCode(const PhoneCode&) = delete;
  PhoneCode& operator=(const PhoneCode&) = delete;
};

// Holds the current phone's mutex, and has logged the call.
class Call {
 public:
  // Of the arguments, strings of the caller are shown in quotes, others as they are.
  template <class... Arguments>
  explicit Call(std::string_view entryPoint, const Arguments&... arguments)
      : phone_(CurrentPhone()), lock_(phone_.mutex), entryPoint_(entryPoint) {
    std::ostringstream list;
    (Show(list, arguments), ...);
    fails_ = phone_.Fails(entryPoint, list.str());
  }

  StandInPhone* operator->() const { return &phone_; }

  bool Fails() const { return fails_; }
  bool Expect(bool condition, std::string_view complaint) const {
    return phone_.Expect(condition, entryPoint_, complaint);
  }
  // Whether that is the attached phone; complains when it is no device that was ever announced.
  bool IsPhone(const void* device) const;
  std::int32_t Result() const { return fails_ ? kFailure : kSuccess; }
  // The failing status.
  template <class... Outputs>
  std::int32_t Refuse(Outputs*... outputs) const {
    if (phone_.setUp.garbage) (Spoil(outputs), ...);
    return kFailure;
  }

 private:
  template <class Output>
  static void Spoil(Output* output) {
    std::fill(reinterpret_cast<unsigned char*>(output),
              reinterpret_cast<unsigned char*>(output + 1), 0xA5);
  }
  template <class Argument>
  static void Show(std::ostringstream& list, const Argument& argument) {
    if (list.tellp() > 0) list << ", ";
    list << argument;
  }
  static void Show(std::ostringstream& list, const char* string) {
    Show(list, string ? '"' + std::string(string) + '"' : "null");
  }

  PhoneCode phoneCode_;
  StandInPhone& phone_;
  std::unique_lock<std::mutex> lock_;
  std::string_view entryPoint_;
  bool fails_ = false;
};

}  // namespace quaylink::stand_in
