#include "ox/sync/http/transfer_trouble.hpp"

#include <curl/curl.h>

namespace ox::sync {

Transfer::Trouble troubleOf(int code, std::string_view reason) {
  using Trouble = Transfer::Trouble;
  switch (code) {
    case CURLE_OK:
      return Trouble::None;

    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:  // of connecting: no other time of libcurl's is limited
    case CURLE_PROXY:
      return Trouble::NoRoute;

    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
      return Trouble::Untrusted;

    // The one code of a handshake that failed; a connection that broke meanwhile has it too.
    case CURLE_SSL_CONNECT_ERROR:
      return reason.find("wrong version number") != reason.npos ? Trouble::NoTls : Trouble::Broken;

    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_NOT_BUILT_IN:
    case CURLE_FAILED_INIT:
      return Trouble::Unusable;

    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:  // also an answer without any head
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WRITE_ERROR:
      return Trouble::Nonsense;

    default:
      return Trouble::Broken;
  }
}

}  // namespace ox::sync
