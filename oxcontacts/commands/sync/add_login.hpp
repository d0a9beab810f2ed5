#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "oxcontacts/context.hpp"

namespace ox::program {

// What `accounts add` is told of a place elsewhere that the account is to be in step with.
struct LoginArguments {
  std::string url;
  std::string folder;
  std::string user;
  std::string passwordCommand;
  std::string passwordFile;
  std::string credential;
  std::string bearerCommand;
  std::string clientCertificate;
  std::string authorities;
  std::vector<std::string> books;  // name or URL
  std::string into;
  bool takesAll = false;
  bool isReadOnly = false;
  bool categoriesAreGroups = false;
  bool allowsHttp = false;
  bool isVerbose = false;

  bool namesPlace() const { return !url.empty() || !folder.empty(); }
  // Whether anything is said that makes sense of such a place alone.
  bool needsPlace() const {
    return !books.empty() || !into.empty() || takesAll || isReadOnly || categoriesAreGroups ||
           isVerbose;
  }
};

// The arguments are borrowed for the run.
void declareLoginOptions(CLI::App& add, LoginArguments& arguments);

// Goes there at once, keeps the login under that name and makes accounts of the books that are
// taken; of a login that is there it takes books that are not in step yet. Nothing is added where
// anything fails.
void addLoginFor(const Context& context, const std::string& name, const LoginArguments& arguments);

}  // namespace ox::program
