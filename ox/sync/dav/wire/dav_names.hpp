#pragma once

#include <string_view>

// Elements of WebDAV (RFC 4918, 3744, 5397, 6578), of CardDAV (RFC 6352) and one of neither, as
// "{namespace}local": prefixes say nothing.

namespace ox::sync::dav {

inline constexpr std::string_view kDavSpace = "DAV:";
inline constexpr std::string_view kCardSpace = "urn:ietf:params:xml:ns:carddav";
inline constexpr std::string_view kServerSpace = "http://calendarserver.org/ns/";

inline constexpr std::string_view kMultistatus = "{DAV:}multistatus";
inline constexpr std::string_view kResponse = "{DAV:}response";
inline constexpr std::string_view kHref = "{DAV:}href";
inline constexpr std::string_view kStatus = "{DAV:}status";
inline constexpr std::string_view kPropstat = "{DAV:}propstat";
inline constexpr std::string_view kProp = "{DAV:}prop";
inline constexpr std::string_view kError = "{DAV:}error";
inline constexpr std::string_view kSaid = "{DAV:}responsedescription";
inline constexpr std::string_view kSyncToken = "{DAV:}sync-token";

inline constexpr std::string_view kResourceType = "{DAV:}resourcetype";
inline constexpr std::string_view kCollection = "{DAV:}collection";
inline constexpr std::string_view kDisplayName = "{DAV:}displayname";
inline constexpr std::string_view kOwner = "{DAV:}owner";
inline constexpr std::string_view kPrincipal = "{DAV:}current-user-principal";
inline constexpr std::string_view kUnauthenticated = "{DAV:}unauthenticated";
inline constexpr std::string_view kPrivileges = "{DAV:}current-user-privilege-set";
inline constexpr std::string_view kReports = "{DAV:}supported-report-set";
inline constexpr std::string_view kSyncCollection = "{DAV:}sync-collection";
inline constexpr std::string_view kEtag = "{DAV:}getetag";
inline constexpr std::string_view kContentType = "{DAV:}getcontenttype";
inline constexpr std::string_view kContentLength = "{DAV:}getcontentlength";
inline constexpr std::string_view kAddressbook = "{urn:ietf:params:xml:ns:carddav}addressbook";
inline constexpr std::string_view kHomes = "{urn:ietf:params:xml:ns:carddav}addressbook-home-set";
inline constexpr std::string_view kDescription =
    "{urn:ietf:params:xml:ns:carddav}addressbook-description";
inline constexpr std::string_view kCardVersions =
    "{urn:ietf:params:xml:ns:carddav}supported-address-data";
inline constexpr std::string_view kMostBytes = "{urn:ietf:params:xml:ns:carddav}max-resource-size";
inline constexpr std::string_view kMultiget =
    "{urn:ietf:params:xml:ns:carddav}addressbook-multiget";
inline constexpr std::string_view kCardText = "{urn:ietf:params:xml:ns:carddav}address-data";
inline constexpr std::string_view kCtag = "{http://calendarserver.org/ns/}getctag";

}  // namespace ox::sync::dav
