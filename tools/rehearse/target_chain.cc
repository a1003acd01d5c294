// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/target_chain.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "svf/text.h"
#include "tools/cli/bit_row.h"
#include "tools/cli/command.h"

namespace tool {
namespace {

using nlohmann::json;

using Names = std::vector<std::string>;

// The quoted names, for messages.
std::string List(const Names &names) {
  std::string list;
  for (const std::string &name : names) {
    list += fmt::format("{}\"{}\"", list.empty() ? "" : ", ", name);
  }
  return list;
}

// A JSON value with its path, "/devices/0/idcode", for messages.
class Node {
 public:
  Node(const json &value, std::string name, std::string path)
      : value_(value), name_(std::move(name)), path_(std::move(path)) {}

  [[noreturn]] void Fail(const std::string &message) const {
    throw Failure(message, path_.empty() ? name_ : name_ + ": " + path_);
  }

  bool Has(const std::string &member) const {
    return value_.contains(member);
  }

  Node At(const std::string &member) const {
    if (!Has(member)) {
      Fail(fmt::format("there must be a member \"{}\" here", member));
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
      nodes.emplace_back(value_[i], name_, fmt::format("{}/{}", path_, i));
    }
    return nodes;
  }

  // The value must be an object with no other members than these.
  void ExpectMembers(const Names &members) const {
    if (!value_.is_object()) {
      Fail("this must be an object, {...}");
    }
    for (const auto &[key, value] : value_.items()) {
      if (std::find(members.begin(), members.end(), key) == members.end()) {
        Fail(fmt::format("there is no member \"{}\" here; these may be given: {}", key,
                         List(members)));
      }
    }
  }

  // A 32-bit number, or a string with one in hexadecimal after 0x.
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
  uint32_t HexNumber(const std::string &text) const {
    const bool hex = text.size() > 2 && text.size() <= 10 && text.compare(0, 2, "0x") == 0 &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
    if (!hex) {
      Fail(fmt::format("\"{}\" is no number; write \"0x\" and 1 to 8 hexadecimal digits", text));
    }
    return static_cast<uint32_t>(std::stoul(text, nullptr, 16));
  }

  const json &value_;
  std::string name_;
  std::string path_;
};

// The names of the fields in these places.
Names FieldNames(std::initializer_list<sim_field_place> places) {
  Names names;
  for (const sim_field &field : sim_fields) {
    if (std::find(places.begin(), places.end(), field.place) != places.end()) {
      names.push_back(field.name);
    }
  }
  return names;
}

uint32_t ReadValue(const Node &node, const sim_field &field) {
  return field.kind == SIM_FLAG ? node.Flag() : node.Number();
}

// Reads a field that the object has.
uint32_t ReadField(const Node &object, const sim_field &field) {
  const Node node = object.At(field.name);
  const uint32_t value = ReadValue(node, field);
  if (!sim_field_allows(&field, value)) {
    node.Fail(field.advice);
  }
  if (field.needs != SIM_FIELD_COUNT && !object.Has(sim_fields[field.needs].name)) {
    node.Fail(fmt::format("this needs a member \"{}\" beside it", sim_fields[field.needs].name));
  }
  return value;
}

// Reads the optional fields of that place.
void ReadFields(const Node &object, sim_field_place place, sim_device_config &device) {
  for (const sim_field &field : sim_fields) {
    if (field.place == place) {
      const bool given = object.Has(field.name);
      sim_field_set(&field, &device, given ? ReadField(object, field) : field.absent);
    }
  }
}

// Reads the mandatory fields of a part, which are validated together once all are known.
void ReadSize(const Node &node, sim_device_config &device) {
  const char *wrong = nullptr;
  for (const sim_field &field : sim_fields) {
    if (field.place != SIM_SIZE_OF_PART) {
      continue;
    }
    const uint32_t value = ReadValue(node.At(field.name), field);
    wrong = sim_field_allows(&field, value) ? wrong : field.advice;
    sim_field_set(&field, &device, value);
  }
  if (wrong == nullptr && !sim_part_fits(&device)) {
    wrong = sim_part_too_large;
  }
  if (wrong != nullptr) {
    node.Fail(wrong);
  }
}

sim_device_config ReadDevice(const Node &node) {
  Names members = FieldNames({SIM_IN_DEVICE});
  members.push_back(SIM_PART_NAME);
  node.ExpectMembers(members);
  sim_device_config device = {};
  ReadFields(node, SIM_IN_DEVICE, device);
  if (!sim_instruction_fits(&device)) {
    const char *instruction = sim_fields[SIM_FIELD_INSTRUCTION].name;
    (node.Has(instruction) ? node.At(instruction) : node).Fail(sim_instruction_wrong);
  }
  if (!sim_bypass_fits(&device)) {
    node.At(sim_fields[SIM_FIELD_BYPASS].name).Fail(sim_bypass_wrong);
  }
  if (node.Has(SIM_PART_NAME)) {
    const Node part = node.At(SIM_PART_NAME);
    part.ExpectMembers(FieldNames({SIM_SIZE_OF_PART, SIM_IN_PART}));
    ReadSize(part, device);
    ReadFields(part, SIM_IN_PART, device);
  }
  return device;
}

// The members that describe a fault of any kind, and those of one kind.
Names FaultMembers() {
  Names members = {"kind"};
  for (int number = SIM_NO_NUMBER + 1; number < SIM_FAULT_NUMBER_COUNT; ++number) {
    members.push_back(sim_fault_number_names[number]);
  }
  return members;
}

Names FaultMembers(const sim_fault_form &form) {
  Names members = {"kind"};
  for (const sim_fault_number number : form.numbers) {
    if (number != SIM_NO_NUMBER) {
      members.push_back(sim_fault_number_names[number]);
    }
  }
  return members;
}

Names FaultKinds() {
  Names kinds;
  for (const sim_fault_form &form : sim_fault_forms) {
    kinds.push_back(form.name);
  }
  return kinds;
}

uint32_t ReadFaultNumber(const Node &node, sim_fault_number number) {
  return number == SIM_NO_NUMBER ? 0 : node.At(sim_fault_number_names[number]).Number();
}

sim_fault ReadFault(const Node &node) {
  node.ExpectMembers(FaultMembers());
  const Node name = node.At("kind");
  const sim_fault_kind kind = sim_fault_kind_of(name.Text().c_str());
  if (kind == SIM_FAULT_KIND_COUNT) {
    name.Fail("this must be one of " + List(FaultKinds()));
  }
  const sim_fault_form &form = sim_fault_forms[kind];
  const uint32_t first = ReadFaultNumber(node, form.numbers[0]);
  const uint32_t second = ReadFaultNumber(node, form.numbers[1]);
  node.ExpectMembers(FaultMembers(form));
  return {kind, first, second};
}

json ParseText(std::string_view text, const std::string &name) {
  try {
    return json::parse(text);
  } catch (const json::parse_error &error) {
    const size_t offset = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
    const svf::Position at = svf::LineIndex(text).At(offset);
    throw Failure("this is no JSON; a chain is described as {\"devices\": [{...}, ...]}",
                  fmt::format("{}:{}:{}", name, at.line, at.column));
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
    throw Failure("the parts of this chain have more memory than can be simulated",
                  name + ": /devices");
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
                    fmt::format("{}: /faults/{}", name, i));
    }
  }
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
      text += fmt::format("{} {} {}\n", device, row, bits.Hex());
    }
  }
  return text;
}

}  // namespace tool
