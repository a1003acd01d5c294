// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/target_chain.h"

#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "svf/position.h"
#include "tools/cli/bit_row.h"
#include "tools/cli/command.h"

namespace tool {
namespace {

using nlohmann::json;

constexpr uint32_t kEraseClocks = 100;
constexpr uint32_t kProgramClocks = 20;

// A value with the way to it, "/devices/0/idcode", for messages.
class Node {
 public:
  Node(const json &value, std::string name, std::string path)
      : value_(value), name_(std::move(name)), path_(std::move(path)) {}

  [[noreturn]] void Fail(const std::string &message) const {
    throw Failure(message, path_.empty() ? name_ : name_ + ": " + path_);
  }

  bool Has(const char *member) const {
    return value_.contains(member);
  }

  Node At(const char *member) const {
    if (!Has(member)) {
      Fail(std::string("there must be a member \"") + member + "\" here");
    }
    return Node(value_[member], name_, path_ + '/' + member);
  }

  // The elements; the value must be an array.
  std::vector<Node> Elements() const {
    if (!value_.is_array()) {
      Fail("this must be an array, [...]");
    }
    std::vector<Node> nodes;
    for (size_t i = 0; i < value_.size(); ++i) {
      nodes.emplace_back(value_[i], name_, path_ + '/' + std::to_string(i));
    }
    return nodes;
  }

  // The value must be an object with none but these members.
  void ExpectMembers(std::initializer_list<const char *> members) const {
    if (!value_.is_object()) {
      Fail("this must be an object, {...}");
    }
    for (const auto &[key, value] : value_.items()) {
      if (!Contains(members, key)) {
        Fail("there is no member \"" + key + "\" here; these may be given: " + List(members));
      }
    }
  }

  // A number of 32 bits, or a string that holds one in hexadecimal after 0x.
  uint32_t Number() const {
    if (value_.is_string()) {
      return HexNumber(value_.get<std::string>());
    }
    if (!value_.is_number_unsigned() ||
        value_.get<uint64_t>() > std::numeric_limits<uint32_t>::max()) {
      Fail("this must be a number from 0 to 4294967295, or a string as \"0x0A014C35\"");
    }
    return value_.get<uint32_t>();
  }

  uint32_t NumberOr(const char *member, uint32_t absent) const {
    return Has(member) ? At(member).Number() : absent;
  }

  bool Flag() const {
    if (!value_.is_boolean()) {
      Fail("this must be true or false");
    }
    return value_.get<bool>();
  }

  std::string Text() const {
    if (!value_.is_string()) {
      Fail("this must be a string");
    }
    return value_.get<std::string>();
  }

 private:
  static bool Contains(std::initializer_list<const char *> names, const std::string &name) {
    for (const char *known : names) {
      if (name == known) {
        return true;
      }
    }
    return false;
  }

  static std::string List(std::initializer_list<const char *> names) {
    std::string list;
    for (const char *name : names) {
      list += (list.empty() ? "\"" : ", \"") + std::string(name) + '"';
    }
    return list;
  }

  uint32_t HexNumber(const std::string &text) const {
    const bool hex = text.size() > 2 && text.size() <= 10 && text.compare(0, 2, "0x") == 0 &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
    if (!hex) {
      Fail("\"" + text + "\" is no number; write \"0x\" and 1 to 8 hexadecimal digits");
    }
    return static_cast<uint32_t>(std::stoul(text, nullptr, 16));
  }

  const json &value_;
  std::string name_;
  std::string path_;
};

void ReadPart(const Node &node, sim_device_config &device) {
  node.ExpectMembers({"rows", "bits", "erase", "program", "blank"});
  device.rows = node.At("rows").Number();
  device.row_bits = node.At("bits").Number();
  if (device.rows == 0 || device.row_bits == 0) {
    node.Fail("rows and bits are at least 1; leave \"part\" out for a device without a part");
  }
  device.erase_clocks = node.NumberOr("erase", kEraseClocks);
  device.program_clocks = node.NumberOr("program", kProgramClocks);
  device.blank = node.Has("blank") && node.At("blank").Flag() ? 1 : 0;
}

sim_device_config ReadDevice(const Node &node) {
  node.ExpectMembers({"idcode", "instruction", "part"});
  sim_device_config device = {};
  device.idcode = node.NumberOr("idcode", 0);
  if (node.Has("idcode") && device.idcode == 0) {
    node.At("idcode").Fail("an IDCODE is not 0; leave it out for a device without one");
  }
  device.idcode_instruction = node.NumberOr("instruction", SIM_IDCODE_6);
  if (device.idcode_instruction != SIM_IDCODE_6 && device.idcode_instruction != SIM_IDCODE_224) {
    node.At("instruction").Fail("the instruction that selects the IDCODE is 6 or 224");
  }
  if (node.Has("part")) {
    ReadPart(node.At("part"), device);
  }
  return device;
}

// The members that give a fault's two numbers; null where it has none.
struct FaultMembers {
  const char *first;
  const char *second;
};

FaultMembers MembersOf(sim_fault_kind kind) {
  switch (kind) {
    case SIM_FAULT_FLIP:
      return {"scan", "bit"};
    case SIM_FAULT_DEAD_ROW:
      return {"device", "row"};
    case SIM_FAULT_MISSING:
      return {"device", nullptr};
    default:
      return {nullptr, nullptr};
  }
}

sim_fault ReadFault(const Node &node) {
  node.ExpectMembers({"kind", "scan", "bit", "device", "row"});
  sim_fault fault = {sim_fault_kind_of(node.At("kind").Text().c_str()), 0, 0};
  if (fault.kind == SIM_FAULT_KIND_COUNT) {
    node.At("kind").Fail(
        "this must be one of \"tdo-stuck-0\", \"tdo-stuck-1\", \"flip\", \"dead-row\", "
        "\"missing\"");
  }
  const FaultMembers members = MembersOf(fault.kind);
  if (members.first != nullptr) {
    fault.first = node.At(members.first).Number();
  }
  if (members.second != nullptr) {
    fault.second = node.At(members.second).Number();
  }
  return fault;
}

json ParseText(std::string_view text, const std::string &name) {
  try {
    return json::parse(text);
  } catch (const json::parse_error &error) {
    const size_t offset = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
    const svf::Position at = svf::LineIndex(text).At(offset);
    throw Failure("this is no JSON; a chain is described as {\"devices\": [{...}, ...]}",
                  name + ':' + std::to_string(at.line) + ':' + std::to_string(at.column));
  } catch (const json::out_of_range &) {
    throw Failure("a number in it is larger than can be read; all numbers here are whole ones",
                  name);
  }
}

std::vector<sim_device_config> MakeDevices(const ChainDescription &description,
                                           const std::string &name) {
  const sim_config config = {description.devices.data(),
                             static_cast<sim_u32>(description.devices.size()), 0};
  if (sim_chain_size(&config) == 0) {
    throw Failure("the parts of this chain have more memory than can be simulated", name);
  }
  return description.devices;
}

}  // namespace

ChainDescription ParseChain(std::string_view text, const std::string &name) {
  const json value = ParseText(text, name);
  const Node root(value, name, "");
  root.ExpectMembers({"devices", "faults"});
  ChainDescription description;
  for (const Node &device : root.At("devices").Elements()) {
    description.devices.push_back(ReadDevice(device));
  }
  if (root.Has("faults")) {
    for (const Node &fault : root.At("faults").Elements()) {
      description.faults.push_back(ReadFault(fault));
    }
  }
  return description;
}

ChainTarget::ChainTarget(const ChainDescription &description, const std::string &name)
    : chain_(MakeDevices(description, name), 0) {
  for (size_t i = 0; i < description.faults.size(); ++i) {
    if (sim_chain_set_fault(chain_.get(), &description.faults[i]) != 0) {
      throw Failure("the chain has no such device, row or scan",
                    name + ": /faults/" + std::to_string(i));
    }
  }
}

void ChainTarget::Write(Line line, bool level) {
  constexpr sim_line kSimLines[] = {SIM_TCK, SIM_TMS, SIM_TDI};
  chain_.Write(kSimLines[static_cast<int>(line)], level);
}

std::string ChainTarget::Memory() {
  std::string text;
  for (uint32_t device = 1; device <= sim_chain_device_count(chain_.get()); ++device) {
    const sim_device_config &config = *sim_chain_device(chain_.get(), device);
    for (uint32_t row = 0; row < config.rows; ++row) {
      BitRow bits;
      for (const char bit : chain_.Row(device, row)) {
        bits.Push(bit == '1');
      }
      text += std::to_string(device) + ' ' + std::to_string(row) + ' ' + bits.Hex() + '\n';
    }
  }
  return text;
}

}  // namespace tool
