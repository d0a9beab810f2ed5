#include "ox/sync/http/transfer.hpp"

#include <curl/curl.h>
#include <new>
#include <stdexcept>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/http/transfer_trouble.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

constexpr std::string_view kAgent = "oxcontacts/" OX_VERSION;

template <typename Value>
void set(CURL* easy, CURLoption option, Value value) {
  const auto code = curl_easy_setopt(easy, option, value);
  if (code == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  if (code != CURLE_OK) {
    throw std::runtime_error(std::string("libcurl cannot do what is needed: ") +
                             curl_easy_strerror(code));
  }
}

CURL* newHandle() {
  static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
  auto* const easy = ready == CURLE_OK ? curl_easy_init() : nullptr;
  if (easy == nullptr) throw std::bad_alloc();
  return easy;
}

long milliseconds(HttpLimits::Time time) {
  return static_cast<long>(time.count());
}

// A line end within a header would be another header: an ETag is what the other side says it is.
void checkLine(const std::string& line) {
  if (line.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos) return;
  throw RemoteError(RemoteFailure::Protocol, "a header of a request would hold a line end");
}

bool names(std::string_view line, std::string_view lowerCaseName) {
  const auto colon = line.find(':');
  return colon != std::string_view::npos && lowerCase(line.substr(0, colon)) == lowerCaseName;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() &&
         std::string_view(" \t\r\n").find(text.front()) != std::string_view::npos) {
    text.remove_prefix(1);
  }
  while (!text.empty() && std::string_view(" \t\r\n").find(text.back()) != std::string_view::npos) {
    text.remove_suffix(1);
  }
  return text;
}

int statusIn(std::string_view line) {
  const auto space = line.find(' ');
  if (space == std::string_view::npos) return 0;
  int status = 0;
  for (const char c : line.substr(space + 1, 3)) {
    if (c < '0' || c > '9') return 0;
    status = status * 10 + (c - '0');
  }
  return status;
}

bool isGood(int status) {
  return status >= 200 && status < 300;
}

}  // namespace

// What libcurl calls. No exception may pass through it.
struct Transfer::Callbacks {
  static std::size_t header(char* text, std::size_t size, std::size_t count, void* self) {
    return static_cast<Transfer*>(self)->takeHeader({text, size * count}) ? size * count : 0;
  }
  static std::size_t body(char* text, std::size_t size, std::size_t count, void* self) {
    return static_cast<Transfer*>(self)->takeBody({text, size * count}) ? size * count : 0;
  }
  static int progress(void* self, curl_off_t, curl_off_t down, curl_off_t, curl_off_t up) {
    auto& transfer = *static_cast<Transfer*>(self);
    if (down + up != transfer.moved_) transfer.lastMove_ = Clock::now();
    transfer.moved_ = down + up;
    return 0;
  }
  static int beforeSending(void* self, char*, char*, int, int) {
    return static_cast<Transfer*>(self)->mayBeSent() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
  }
};

Transfer::Transfer() : easy_(newHandle()), error_(CURL_ERROR_SIZE) {
  set(easy_, CURLOPT_PRIVATE, static_cast<void*>(this));
  set(easy_, CURLOPT_ERRORBUFFER, error_.data());
  set(easy_, CURLOPT_NOSIGNAL, 1L);
  set(easy_, CURLOPT_QUICK_EXIT, 1L);  // a name that is being looked up is not waited for
  set(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
  set(easy_, CURLOPT_FOLLOWLOCATION, 0L);
  set(easy_, CURLOPT_PATH_AS_IS, 1L);
  set(easy_, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  set(easy_, CURLOPT_PIPEWAIT, 1L);
  set(easy_, CURLOPT_TCP_KEEPALIVE, 1L);
  set(easy_, CURLOPT_SSL_VERIFYPEER, 1L);
  set(easy_, CURLOPT_SSL_VERIFYHOST, 2L);
  set(easy_, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(easy_, CURLOPT_USERAGENT, kAgent.data());
  set(easy_, CURLOPT_HEADERFUNCTION, &Callbacks::header);
  set(easy_, CURLOPT_HEADERDATA, static_cast<void*>(this));
  set(easy_, CURLOPT_WRITEFUNCTION, &Callbacks::body);
  set(easy_, CURLOPT_WRITEDATA, static_cast<void*>(this));
  set(easy_, CURLOPT_NOPROGRESS, 0L);
  set(easy_, CURLOPT_XFERINFOFUNCTION, &Callbacks::progress);
  set(easy_, CURLOPT_XFERINFODATA, static_cast<void*>(this));
  set(easy_, CURLOPT_PREREQFUNCTION, &Callbacks::beforeSending);
  set(easy_, CURLOPT_PREREQDATA, static_cast<void*>(this));
}

Transfer::~Transfer() {
  curl_easy_cleanup(easy_);
  curl_slist_free_all(static_cast<curl_slist*>(headers_));
}

void Transfer::prepare(const HttpSession& session, const HttpRequest& request, const Url& url,
                       const BodySink* sink, Scheme scheme) {
  limits_ = &session.limits;
  sink_ = sink;
  onlyReads_ = request.onlyReads;
  scheme_ = scheme;
  isDone_ = isHeadRead_ = hasBegun_ = isBodyStarted_ = false;
  isSendable_ = true;
  trouble_ = Trouble::None;
  reason_.clear();
  thrown_ = nullptr;
  answer_ = {};
  answer_.url = url.text;
  headerLines_ = headerBytes_ = bodyBytes_ = 0;
  requests_ = 0;
  bytes_ = request.body.size();
  moved_ = 0;
  lastMove_ = Clock::now();
  error_.front() = '\0';

  set(easy_, CURLOPT_URL, url.text.c_str());
  set(easy_, CURLOPT_CONNECTTIMEOUT_MS, milliseconds(limits_->connecting));
  set(easy_, CURLOPT_ACCEPT_ENCODING, request.wantsIdentity ? "identity" : "");
  setRequest(request);
  setSecret(session, url);
  setTls(session, url);
}

void Transfer::addHeader(const std::string& line) {
  auto* const longer = curl_slist_append(static_cast<curl_slist*>(headers_), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  headers_ = longer;
}

void Transfer::setRequest(const HttpRequest& request) {
  set(easy_, CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
  curl_slist_free_all(static_cast<curl_slist*>(std::exchange(headers_, nullptr)));
  bool hasType = false;
  for (const auto& line : request.headers) {
    checkLine(line);
    hasType = hasType || names(line, "content-type");
    addHeader(line);
  }
  checkLine(request.method);
  const bool hasBody = !request.body.empty() || request.method == "PUT" || request.method == "POST";
  set(easy_, CURLOPT_NOBODY, 0L);
  set(easy_, CURLOPT_HTTPGET, 1L);
  if (request.method == "HEAD") {
    set(easy_, CURLOPT_NOBODY, 1L);
  } else if (hasBody) {
    set(easy_, CURLOPT_POST, 1L);
    set(easy_, CURLOPT_POSTFIELDS, request.body.data());
    set(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    // libcurl would call it a form; and a server that has to be asked whether the body is welcome
    // costs a round trip, or a second where it does not know the question.
    if (!hasType) addHeader("Content-Type:");
    addHeader("Expect:");
  }
  set(easy_, CURLOPT_CUSTOMREQUEST, request.method.c_str());
  set(easy_, CURLOPT_HTTPHEADER, static_cast<curl_slist*>(headers_));
}

// Exactly the scheme that was asked for: where libcurl may choose, it sends bodies twice or not at
// all. A request that goes without the secret to where it may go is a question for the challenge:
// with a user and no scheme libcurl reads that and forgets, as it does not otherwise, that it did,
// so that it takes the next one for a new one.
void Transfer::setSecret(const HttpSession& session, const Url& url) {
  const char* none = nullptr;
  const char* user = session.login.user.c_str();
  set(easy_, CURLOPT_USERNAME, none);
  set(easy_, CURLOPT_PASSWORD, none);
  set(easy_, CURLOPT_XOAUTH2_BEARER, none);
  switch (scheme_) {
    case Scheme::Unknown:
      set(easy_, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_NONE));
      if (session.hasSecret() && session.isAccepted(url)) set(easy_, CURLOPT_USERNAME, user);
      return;
    case Scheme::Basic:
    case Scheme::Digest:
      set(easy_, CURLOPT_HTTPAUTH,
          static_cast<long>(scheme_ == Scheme::Basic ? CURLAUTH_BASIC : CURLAUTH_DIGEST));
      set(easy_, CURLOPT_USERNAME, user);
      set(easy_, CURLOPT_PASSWORD, session.secret().text().c_str());
      return;
    case Scheme::Bearer:
      set(easy_, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BEARER));
      set(easy_, CURLOPT_XOAUTH2_BEARER, session.secret().text().c_str());
      return;
  }
}

void Transfer::setTls(const HttpSession& session, const Url& url) {
  const auto& login = session.login;
  if (!login.authorities.empty()) {
    // Those alone, not the system's beside them.
    set(easy_, CURLOPT_CAINFO, login.authorities.c_str());
    set(easy_, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  }
  // It says who the user is, as a password does.
  const bool isShown = !login.clientCertificate.empty() && session.isAccepted(url);
  const char* file = isShown ? login.clientCertificate.c_str() : nullptr;
  set(easy_, CURLOPT_SSLCERT, file);
  set(easy_, CURLOPT_SSLKEY, file);
}

bool Transfer::fail(Trouble trouble, std::string reason) {
  if (trouble_ == Trouble::None) {
    trouble_ = trouble;
    reason_ = std::move(reason);
  }
  return false;
}

// libcurl sends a request again by itself when a connection that it had kept breaks before a byte
// of the answer. What changes something may have been done by then, so that is for others to judge.
bool Transfer::mayBeSent() {
  long sent = 0;
  curl_easy_getinfo(easy_, CURLINFO_REQUEST_SIZE, &sent);
  if (onlyReads_ || isSendable_ || sent == 0) {
    isSendable_ = false;
    ++requests_;
    return true;
  }
  return fail(Trouble::Broken, "the connection was closed before the answer");
}

void Transfer::startHead(std::string_view line) {
  answer_.status = statusIn(line);
  answer_.headers.clear();
  headerLines_ = headerBytes_ = 0;
  isHeadRead_ = false;
  isSendable_ = true;
}

bool Transfer::takeHeader(std::string_view line) {
  lastMove_ = Clock::now();
  if (isBodyStarted_) return true;  // a trailer
  if (line.starts_with("HTTP/")) {
    startHead(line);
    return true;
  }
  headerBytes_ += line.size();
  if (++headerLines_ > limits_->headers || headerBytes_ > limits_->headerBytes) {
    return fail(Trouble::Nonsense, "the answer has too many headers");
  }
  const auto text = trimmed(line);
  if (text.empty()) {
    isHeadRead_ = answer_.status >= 200;
    return true;
  }
  const auto colon = text.find(':');
  if (line.front() == ' ' || line.front() == '\t') {  // RFC 9112, section 5.2
    if (!answer_.headers.empty()) answer_.headers.back().second.append(" ").append(text);
  } else if (colon != std::string_view::npos) {
    answer_.headers.emplace_back(lowerCase(trimmed(text.substr(0, colon))),
                                 trimmed(text.substr(colon + 1)));
  }
  return true;
}

bool Transfer::takeBody(std::string_view part) {
  lastMove_ = Clock::now();
  isBodyStarted_ = true;
  bytes_ += part.size();
  bodyBytes_ += part.size();
  const bool sinks = sink_ != nullptr && isGood(answer_.status);
  if (bodyBytes_ > (sinks ? limits_->sunkBody : limits_->keptBody)) {
    return fail(Trouble::Nonsense, "the answer is larger than what is taken");
  }
  try {
    if (!sinks) {
      answer_.body.append(part);
      return true;
    }
    if (!std::exchange(hasBegun_, true) && sink_->begin) sink_->begin(answer_);
    if (sink_->take) sink_->take(part);
    return true;
  } catch (...) {
    thrown_ = std::current_exception();
    return false;
  }
}

bool Transfer::isSilent(Clock::time_point now) const {
  return limits_ != nullptr && now - lastMove_ > limits_->silence;
}

void Transfer::fallSilent() {
  fail(Trouble::Broken,
       "no answer came in " + std::to_string(limits_->silence.count() / 1000) + " s of silence");
  isDone_ = true;
}

void Transfer::finish(int code) {
  isDone_ = true;
  if (code == CURLE_OK || thrown_) return;
  auto detail = std::string(trimmed(error_.data()));
  if (detail.empty()) detail = curl_easy_strerror(static_cast<CURLcode>(code));
  fail(troubleOf(code, detail), detail);
}

}  // namespace ox::sync
