#include "ox/sync/dav/discovery.hpp"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "ox/sync/dav/login_place.hpp"
#include "tests/sync/dav/scripted_book.hpp"

using namespace ox::sync;
using namespace ox::support;

namespace {

const std::string kPrincipal =
    "<current-user-principal><href>/principals/ann/</href></current-user-principal>";

std::string homes(const std::vector<std::string>& hrefs) {
  std::string set = "<C:addressbook-home-set>";
  for (const auto& href : hrefs) set += "<href>" + href + "</href>";
  return set + "</C:addressbook-home-set>";
}

std::string folder(const std::string& href, const std::string& properties = {}) {
  return response(href, propstat("<resourcetype><collection/></resourcetype>" + properties));
}

std::string book(const std::string& href, const std::string& properties = {}) {
  return response(
      href, propstat("<resourcetype><collection/><C:addressbook/></resourcetype>" + properties));
}

std::string owner(const std::string& href) {
  return "<owner><href>" + href + "</href></owner>";
}

// A server that knows those places; Depth 1 is asked for as "PATH 1". All else is 404.
using Places = std::map<std::string, ScriptedAnswer>;

class Site {
 public:
  explicit Site(Places places) : places_(std::move(places)) {
    server.answer([this](const ScriptedRequest& request) {
      const auto found =
          places_.find(request.target + (request.header("depth") == "1" ? " 1" : ""));
      return found == places_.end() ? plain(404) : found->second;
    });
  }

  Offer discovered(
      const std::string& url, const std::string& confirmed = {},
      const Resolver& resolver = [](const std::string&, const std::string&) {
        return ServiceRecords();
      }) {
    LoginSettings login;
    login.url = url;
    login.allowHttp = true;
    HttpClient client(login, {}, ScriptedBook::limits());
    return discover(client, login, confirmed, resolver);
  }
  Offer discovered() { return discovered(server.origin()); }

  // "URL name", then what there is to say of it.
  std::string shown(const Offer& offer) const {
    std::string text;
    for (const auto& each : offer.books) {
      text +=
          (text.empty() ? "" : "; ") + each.url.substr(server.origin().size()) + " " + each.name;
      if (!each.description.empty()) text += " (" + each.description + ")";
      if (each.isReadOnly) text += " read-only";
      if (!each.isOwn) text += " foreign";
    }
    return text;
  }

  std::string asked() const { return listed(server.requests()); }

  ScriptedServer server;

 private:
  Places places_;
};

Places wholeSite() {
  return {{"/", multistatus(folder("/", kPrincipal))},
          {"/principals/ann/", multistatus(folder("/principals/ann/", homes({"/ann/", "/team/"})))},
          {"/ann/ 1", multistatus(folder("/ann/") +
                                  book("/ann/private/",
                                       "<displayname>Mine</displayname>"
                                       "<C:addressbook-description>All of them"
                                       "</C:addressbook-description>" +
                                           owner("/principals/ann")) +
                                  folder("/ann/calendar/") + book("/ann/a%20b") +
                                  book("/ann/everyone/", owner("/principals/system/")))},
          {"/team/ 1", multistatus(book("/team/sales/",
                                        "<current-user-privilege-set><privilege><read/>"
                                        "</privilege></current-user-privilege-set>") +
                                   book("/ann/private/"))}};
}

const std::string kWholeSite =
    "/ann/private/ Mine (All of them); /ann/a%20b/ a b; /ann/everyone/ everyone foreign;"
    " /team/sales/ sales read-only";

// The sentence of a NoBook.
std::string noBook(Site& site, const std::string& path = {}) {
  try {
    site.discovered(site.server.origin() + path);
  } catch (const RemoteError& error) {
    EXPECT_EQ(error.kind(), RemoteFailure::NoBook);
    std::string text = error.what();
    for (auto at = text.find(site.server.origin()); at != std::string::npos;
         at = text.find(site.server.origin())) {
      text.replace(at, site.server.origin().size(), "HOST");
    }
    return text;
  }
  return "found";
}

}  // namespace

TEST(Discovery, GoesFromTheHostToItsBooks) {
  Site site(wholeSite());
  const auto offer = site.discovered();
  EXPECT_EQ(site.shown(offer), kWholeSite);
  EXPECT_EQ(offer.principal, site.server.url("/principals/ann/"));
  EXPECT_EQ(offer.homes,
            (std::vector<std::string>{site.server.url("/ann/"), site.server.url("/team/")}));
  EXPECT_EQ(site.asked(),
            "PROPFIND /.well-known/carddav, PROPFIND /, PROPFIND /principals/ann/, PROPFIND /ann/,"
            " PROPFIND /team/");
  EXPECT_EQ(site.server.requests()[0].header("depth"), "0");
}

TEST(Discovery, FollowsTheWellKnownAddressWhereverItLeads) {
  for (const int code : {301, 302, 303, 307, 308}) {
    auto places = wholeSite();
    places["/.well-known/carddav"] = {.status = code, .headers = {{"Location", "/dav/"}}};
    places["/dav/"] = multistatus(folder("/dav/", kPrincipal));
    places.erase("/");
    Site site(places);
    EXPECT_EQ(site.shown(site.discovered()), kWholeSite) << code;
  }
}

TEST(Discovery, KeepsThePlaceThatABookHasMovedToForGood) {
  for (const int code : {301, 302, 303, 307, 308}) {
    Site site({{"/old/", {.status = code, .headers = {{"Location", "/new/"}}}},
               {"/new/", multistatus(book("/new/"))}});
    const bool isForGood = code == 301 || code == 308;
    EXPECT_EQ(site.shown(site.discovered(site.server.url("/old/"))),
              isForGood ? "/new/ new" : "/old/ old")
        << code;
  }
}

TEST(Discovery, DoesNotBelieveTheWellKnownAddress) {
  for (const auto& answer : {plain(404), plain(403), plain(405), plain(500), page(),
                             multistatus(folder("/.well-known/carddav"))}) {
    auto places = wholeSite();
    places["/.well-known/carddav"] = answer;
    Site site(places);
    EXPECT_EQ(site.shown(site.discovered()), kWholeSite) << answer.status;
  }
}

TEST(Discovery, AsksAUrlWithAPathAlone) {
  auto places = wholeSite();
  places["/dav/x"] = multistatus(folder("/dav/x/", kPrincipal));
  Site site(places);
  EXPECT_EQ(site.shown(site.discovered(site.server.url("/dav/x"))), kWholeSite);
  EXPECT_EQ(site.server.requests()[0].target, "/dav/x");
}

TEST(Discovery, TakesTheUrlOfABookForThatBook) {
  Site site({{"/ann/private/", multistatus(book("/ann/private/", kPrincipal + "<displayname>Mine"
                                                                              "</displayname>"))}});
  const auto offer = site.discovered(site.server.url("/ann/private/"));
  EXPECT_EQ(site.shown(offer), "/ann/private/ Mine");
  EXPECT_EQ(offer.principal, site.server.url("/principals/ann/"));
  EXPECT_EQ(site.asked(), "PROPFIND /ann/private/");
  Site other({{"/x/", multistatus(book("/x/", kPrincipal + owner("/principals/bob/")))}});
  EXPECT_EQ(other.shown(other.discovered(other.server.url("/x/"))), "/x/ x foreign");
}

TEST(Discovery, TakesAPrincipalAndAHomeForWhatTheyAre) {
  auto places = wholeSite();
  places["/ann/"] = multistatus(folder("/ann/"));
  Site site(places);
  EXPECT_EQ(site.shown(site.discovered(site.server.url("/principals/ann/"))),
            "/ann/private/ Mine (All of them); /ann/a%20b/ a b; /ann/everyone/ everyone;"
            " /team/sales/ sales read-only");
  EXPECT_EQ(site.shown(site.discovered(site.server.url("/ann/"))),
            "/ann/private/ Mine (All of them); /ann/a%20b/ a b; /ann/everyone/ everyone");
}

TEST(Discovery, SaysInOneSentenceWhatIsNoAddressBook) {
  Site web({{"/", page()}});
  EXPECT_EQ(noBook(web, "/"),
            "There is no address book at HOST/: HOST/ answered 200 with text/html where a"
            " multistatus of WebDAV was expected.");
  Site nothing({});
  EXPECT_EQ(noBook(nothing, "/x/"), "There is no address book at HOST/x/: HOST/x/ answered 404.");
  Site webdav(
      {{"/files/", multistatus(folder("/files/"))},
       {"/files/ 1", multistatus(folder("/files/") + response("/files/a.txt", propstat("")))}});
  EXPECT_EQ(noBook(webdav, "/files/"),
            "There is no address book at HOST/files/: HOST/files/ speaks WebDAV, but leads to no "
            "address book.");
  Site calendars({{"/", multistatus(folder("/", kPrincipal))},
                  {"/principals/ann/", multistatus(folder("/principals/ann/"))}});
  EXPECT_EQ(noBook(calendars),
            "There is no address book at HOST: HOST/ speaks WebDAV, but leads to no address book.");
  Site empty({{"/", multistatus(folder("/", kPrincipal))},
              {"/principals/ann/", multistatus(folder("/principals/ann/", homes({"/ann/"})))},
              {"/ann/ 1", multistatus(folder("/ann/"))}});
  EXPECT_EQ(
      noBook(empty),
      "There is no address book at HOST: HOST/ leads to an account without any address book.");
  Site away({{"/", multistatus(response("http%3A//127.0.0.1/", status("404 Not Found")))}});
  EXPECT_EQ(
      noBook(away),
      "There is no address book at HOST: HOST/ speaks WebDAV, and says that it is not there.");
}

TEST(Discovery, IsALoginThatIsRefused) {
  Site site({{"/", {.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"x\""}}}}});
  EXPECT_EQ(failureOf([&] { site.discovered(); }), "Login");
}

TEST(Discovery, SaysWhoItIsToAServerThatLetsAnybodyLook) {
  Site site(wholeSite());
  const auto places = wholeSite();
  site.server.answer([&](const ScriptedRequest& request) {
    if (request.target == "/" && !request.has("authorization")) {
      return multistatus(folder("/",
                                "<current-user-principal><unauthenticated/>"
                                "</current-user-principal>"));
    }
    const auto found = places.find(request.target + (request.header("depth") == "1" ? " 1" : ""));
    return found == places.end() ? plain(404) : found->second;
  });
  LoginSettings login;
  login.url = site.server.origin();
  login.allowHttp = true;
  login.user = "ann";
  login.password = {PasswordSource::Kind::Command, "echo secret"};
  HttpClient client(login, {}, ScriptedBook::limits());
  const auto offer = discover(client, login, {}, {});
  EXPECT_EQ(site.shown(offer), kWholeSite);
  EXPECT_EQ(offer.scheme, "basic");
  EXPECT_EQ(site.server.requests().back().header("authorization"), "Basic YW5uOnNlY3JldA==");
}

TEST(Discovery, NamesAForeignHostAndAsksNothingOfIt) {
  auto places = wholeSite();
  places["/principals/ann/"] =
      multistatus(folder("/principals/ann/", homes({"https://books.example/ann/", "/team/"})));
  Site site(places);
  const auto offer = site.discovered();
  EXPECT_EQ(offer.foreignHost, "books.example");
  EXPECT_EQ(site.shown(offer), "");
}

TEST(Discovery, AsksAForeignHostThatTheUserHasConfirmed) {
  Site there(wholeSite());
  Site here(
      {{"/", multistatus(folder("/", "<current-user-principal><href>http://127.0.0.1:" +
                                         std::to_string(there.server.port()) +
                                         "/principals/ann/</href></current-user-principal>"))}});
  const auto url = "http://localhost:" + std::to_string(here.server.port());
  EXPECT_EQ(here.discovered(url).foreignHost, "127.0.0.1");
  EXPECT_EQ(there.asked(), "");
  EXPECT_EQ(there.shown(here.discovered(url, "127.0.0.1")), kWholeSite);
}

TEST(Discovery, FindsTheServerOfAnAddressByItsDomain) {
  Site site(wholeSite());
  std::string services;
  const auto resolver = [&](const std::string& service, const std::string& domain) {
    services += service + "." + domain + " ";
    ServiceRecords records;
    if (service == "_carddav._tcp") {
      records.targets = {{.host = "127.0.0.1", .port = site.server.port()}};
      records.path = "/principals/ann/";
    }
    return records;
  };
  const auto first = site.discovered("ann@Example.ORG", {}, resolver);
  EXPECT_EQ(first.foreignHost, "127.0.0.1");
  EXPECT_EQ(first.books.size(), 0U);
  EXPECT_EQ(site.asked(), "");
  EXPECT_EQ(services, "_carddavs._tcp.example.org _carddav._tcp.example.org ");
  EXPECT_EQ(site.discovered("ann@example.org", "127.0.0.1", resolver).books.size(), 4U);
  EXPECT_EQ(site.server.requests()[0].target, "/principals/ann/");
}

TEST(LoginPlace, IsNoneWhereTheUrlHoldsUserOrPassword) {
  for (const auto* url :
       {"https://ann:pw@h.example/b/", "https://ann@h.example", "ann:pw@h.example"}) {
    LoginSettings settings;
    settings.url = url;
    try {
      loginPlace(settings, {});
      ADD_FAILURE() << url;
    } catch (const RemoteError& error) {
      EXPECT_EQ(error.kind(), RemoteFailure::Usage);
      EXPECT_STREQ(error.what(),
                   "User and password do not belong into a URL, which is kept and shown.");
    }
  }
}

TEST(LoginPlace, IsWhatTheUrlOfALoginNames) {
  const auto starts = [](const std::string& url, bool allowsHttp = false) {
    LoginSettings login;
    login.url = url;
    login.allowHttp = allowsHttp;
    const auto place = loginPlace(login, [](const std::string& service, const std::string& domain) {
      ServiceRecords records;
      if (domain == "two.example" && service == "_carddavs._tcp") {
        records.targets = {{.host = "a.two.example", .port = 443},
                           {.host = "b.example", .port = 8443}};
      }
      if (domain == "old.example" && service == "_carddav._tcp") {
        records.targets = {{.host = "old.example", .port = 80}};
        records.path = "/dav";
      }
      return records;
    });
    auto text = place.domain;
    for (const auto& start : place.starts) text += " " + start;
    return text;
  };
  EXPECT_EQ(starts("https://Dav.example.org/ann/"), "dav.example.org https://Dav.example.org/ann/");
  EXPECT_EQ(starts("dav.example.org"),
            "dav.example.org https://dav.example.org/.well-known/carddav https://dav.example.org/");
  EXPECT_EQ(starts("https://dav.example.org:8443/"),
            "dav.example.org https://dav.example.org:8443/.well-known/carddav"
            " https://dav.example.org:8443/");
  EXPECT_EQ(starts("dav.example.org/x/"), "dav.example.org https://dav.example.org/x/");
  EXPECT_EQ(starts("ann@plain.example"),
            "plain.example https://plain.example/.well-known/carddav https://plain.example/");
  EXPECT_EQ(starts("ann@two.example"),
            "two.example https://a.two.example:443/.well-known/carddav https://a.two.example:443/"
            " https://b.example:8443/.well-known/carddav https://b.example:8443/");
  EXPECT_EQ(starts("ann@old.example", true), "old.example http://old.example:80/dav");
  EXPECT_EQ(starts("ann@old.example"),
            "old.example https://old.example/.well-known/carddav https://old.example/");
  for (const auto* wrong :
       {"", "ann@", "a b.example", "ftp://dav.example.org/", "https://", "ann@example.org/x"}) {
    EXPECT_EQ(failureOf([&] { starts(wrong); }), "Usage") << wrong;
  }
}
