#include "ox/OxAddressBookSDK/general/json_tree.hpp"

#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace ox {
namespace {

using Json = nlohmann::json;

// Builds the tree from the parser's events. An answer of false ends the parsing. The library's own
// tree is not used: it keeps one of several equal names and knows no limit of depth.
class TreeBuilder final : public nlohmann::json_sax<Json> {
 public:
  explicit TreeBuilder(std::size_t maxDepth) : maxDepth_(maxDepth) {}

  JsonNode take() { return std::move(root_); }

  bool null() override { return add({}) != nullptr; }
  bool boolean(bool) override { return false; }
  bool number_integer(std::int64_t number) override { return add({number}) != nullptr; }
  bool number_unsigned(std::uint64_t number) override {
    if (number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return false;
    return add({static_cast<std::int64_t>(number)}) != nullptr;
  }
  // Integers beyond 64 bits come here too.
  bool number_float(double number, const std::string& spelling) override {
    if (spelling.find_first_of(".eE") == std::string::npos) return false;
    return add({number}) != nullptr;
  }
  bool string(std::string& text) override { return add({std::move(text)}) != nullptr; }
  bool binary(Json::binary_t&) override { return false; }

  bool start_object(std::size_t) override {
    JsonNode::Members members;
    members.reserve(4);  // what most of a book's objects hold
    return open({std::move(members)});
  }
  bool start_array(std::size_t) override { return open({JsonNode::Elements()}); }
  bool key(std::string& name) override {
    open_.back()->as<JsonNode::Members>()->push_back({std::move(name), {}});
    return true;
  }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
    return false;
  }

 private:
  // Puts the node where the next value belongs; tells where it stands until the next call.
  JsonNode* add(JsonNode node) {
    if (open_.empty()) {
      root_ = std::move(node);
      return &root_;
    }
    if (auto* elements = open_.back()->as<JsonNode::Elements>()) {
      return &elements->emplace_back(std::move(node));
    }
    auto& member = open_.back()->as<JsonNode::Members>()->back();
    member.node = std::move(node);
    return &member.node;
  }

  bool open(JsonNode node) {
    if (open_.size() >= maxDepth_) return false;
    open_.push_back(add(std::move(node)));
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  std::size_t maxDepth_;
  JsonNode root_;
  std::vector<JsonNode*> open_;  // the last of each container's children, so none of them moves
};

}  // namespace

std::optional<JsonNode> parseJson(std::string_view text, std::size_t maxDepth) {
  TreeBuilder builder(maxDepth);
  if (!Json::sax_parse(text.data(), text.data() + text.size(), &builder)) return std::nullopt;
  return builder.take();
}

}  // namespace ox
