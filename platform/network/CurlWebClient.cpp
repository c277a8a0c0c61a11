#include "platform/network/CurlWebClient.h"

#include "platform/foundation/SystemLibrary.h"
#include "platform/foundation/Trace.h"
#include "platform/network/Gunzip.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <utility>

namespace quillomat {

namespace {

constexpr std::string_view scheme = "https://";
constexpr std::size_t longestUrl = 8192;
constexpr std::size_t mostHeaderBytes = std::size_t{256} << 10;

bool isAsciiLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isLegal(char c, bool inAuthority) {
    constexpr std::string_view marks = "-._~:/?#@!$&'()*+,;=%";
    return isAsciiLetterOrDigit(c) || marks.find(c) != std::string_view::npos ||
           (inAuthority && (c == '[' || c == ']'));
}

bool everyPercentIsAnEscape(std::string_view text) {
    for (auto at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
        const std::string_view digits = text.substr(at + 1, 2);
        if (digits.size() != 2 || std::isxdigit(static_cast<unsigned char>(digits[0])) == 0 ||
            std::isxdigit(static_cast<unsigned char>(digits[1])) == 0) {
            return false;
        }
    }
    return true;
}

std::string_view authorityOf(std::string_view url) {
    url.remove_prefix(scheme.size());
    return url.substr(0, url.find_first_of("/?#"));
}

/// Names below "invalid" are reserved for hosts that do not exist; asking for one could only cost time.
bool cannotExist(std::string_view authority) {
    const std::string_view host = authority.substr(0, authority.find(':'));
    return host == "invalid" || host.ends_with(".invalid");
}

/// libcurl, which brings thirty libraries along, is opened with the first client.
const SystemLibrary library{QUILLOMAT_LIBCURL};

namespace lib {
const SystemFunction<decltype(::curl_easy_cleanup)> easy_cleanup{library, "curl_easy_cleanup"};
const SystemFunction<decltype(::curl_easy_getinfo)> easy_getinfo{library, "curl_easy_getinfo"};
const SystemFunction<decltype(::curl_easy_init)> easy_init{library, "curl_easy_init"};
const SystemFunction<decltype(::curl_easy_perform)> easy_perform{library, "curl_easy_perform"};
const SystemFunction<decltype(::curl_easy_setopt)> easy_setopt{library, "curl_easy_setopt"};
const SystemFunction<decltype(::curl_easy_strerror)> easy_strerror{library, "curl_easy_strerror"};
const SystemFunction<decltype(::curl_global_init)> global_init{library, "curl_global_init"};
const SystemFunction<decltype(::curl_slist_append)> slist_append{library, "curl_slist_append"};
const SystemFunction<decltype(::curl_slist_free_all)> slist_free_all{library, "curl_slist_free_all"};
} // namespace lib

void startLibraryOnce() {
    static const CURLcode started = lib::global_init(CURL_GLOBAL_DEFAULT);
    static_cast<void>(started);
}

struct FreeStrings {
    void operator()(curl_slist* list) const { lib::slist_free_all(list); }
};
using StringList = std::unique_ptr<curl_slist, FreeStrings>;

struct CleanUp {
    void operator()(CURL* handle) const { lib::easy_cleanup(handle); }
};

StringList listOf(const std::vector<std::string>& texts) {
    StringList list;
    if (!library.isThere()) {
        return list;
    }
    for (const std::string& text : texts) {
        if (curl_slist* longer = lib::slist_append(list.get(), text.c_str())) {
            static_cast<void>(list.release());
            list.reset(longer);
        }
    }
    return list;
}

/// What has arrived of one document: the body as it came over the wire, and what its headers say about it.
struct Reply {
    Bytes body;
    std::uint64_t sizeLimit = 0;
    std::optional<std::uint64_t> announcedLength;
    bool isLengthContradictory = false;
    bool isChunked = false;
    std::string encoding;
    std::size_t headerBytes = 0;
    bool isTooLarge = false;

    /// Headers of a redirect before, or of an interim answer, say nothing about the document.
    void beginHeaders() {
        announcedLength.reset();
        isLengthContradictory = false;
        isChunked = false;
        encoding.clear();
    }
    void takeField(std::string_view name, std::string_view value);
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void Reply::takeField(std::string_view name, std::string_view value) {
    const std::string field = lowerCase(name);
    if (field == "content-length") {
        std::uint64_t length = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), length);
        isLengthContradictory = isLengthContradictory || error != std::errc() || end != value.data() + value.size() ||
                                announcedLength.value_or(length) != length;
        announcedLength = length;
        isTooLarge = length > sizeLimit;
    } else if (field == "transfer-encoding") {
        isChunked = lowerCase(value) == "chunked";
    } else if (field == "content-encoding") {
        encoding = lowerCase(value);
    }
}

std::size_t takeBody(char* data, std::size_t size, std::size_t count, void* user) {
    auto& reply = *static_cast<Reply*>(user);
    const std::size_t length = size * count;
    if (length > reply.sizeLimit - reply.body.size()) {
        reply.isTooLarge = true;
        return 0;
    }
    const auto* bytes = reinterpret_cast<const std::byte*>(data);
    reply.body.insert(reply.body.end(), bytes, bytes + length);
    return length;
}

std::size_t takeHeader(char* data, std::size_t size, std::size_t count, void* user) {
    auto& reply = *static_cast<Reply*>(user);
    const std::size_t length = size * count;
    const std::string_view line(data, length);
    if (line.starts_with("HTTP/")) {
        reply.beginHeaders();
    } else if (const auto colon = line.find(':'); colon != std::string_view::npos) {
        reply.takeField(line.substr(0, colon), trimmed(line.substr(colon + 1)));
    }
    // The library keeps every header line, and a hostile server would never stop sending them.
    reply.headerBytes += length;
    return reply.isTooLarge || reply.headerBytes > mostHeaderBytes ? 0 : length;
}

} // namespace

struct CurlWebClient::Session {
    explicit Session(CurlOptions settings);

    [[nodiscard]] Result<Bytes> fetch(const std::string& url);

    CurlOptions options;
    bool isHostLost = false; // the last fetch found nobody, or waited in vain

private:
    template <typename T> void set(CURLoption option, T value) { lib::easy_setopt(handle.get(), option, value); }
    void setLimits();
    void setSecurity();
    [[nodiscard]] std::string transportComplaint(CURLcode code, const Reply& reply) const;
    [[nodiscard]] std::string lengthComplaint(const Reply& reply) const;
    [[nodiscard]] std::string libraryComplaint(CURLcode code) const;
    template <typename T> [[nodiscard]] T get(CURLINFO info) const {
        T value{};
        lib::easy_getinfo(handle.get(), info, &value);
        return value;
    }

    StringList resolve;
    StringList fields;
    std::unique_ptr<CURL, CleanUp> handle;
    char errorText[CURL_ERROR_SIZE] = {};
};

CurlWebClient::Session::Session(CurlOptions settings)
    : options(std::move(settings))
    , resolve(listOf(options.resolve))
    , fields(listOf({"Accept-Encoding: gzip", "Connection: close"})) {
    if (!library.isThere()) {
        return;
    }
    startLibraryOnce();
    handle.reset(lib::easy_init());
    if (!handle) {
        return;
    }
    setLimits();
    setSecurity();
    set(CURLOPT_ERRORBUFFER, &errorText[0]);
    set(CURLOPT_USERAGENT, "quillomat");
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_FAILONERROR, 1L);
    // The library cuts a body at its announced length and takes what follows for the next answer. Here a body ends
    // where the connection ends (or its stream, in HTTP/2), and its length is compared with the announced one then.
    set(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
    // It also takes half a compressed document for a whole one, so that it is unpacked here.
    set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    set(CURLOPT_HTTPHEADER, fields.get());
    set(CURLOPT_WRITEFUNCTION, &takeBody);
    set(CURLOPT_HEADERFUNCTION, &takeHeader);
    if (resolve) {
        set(CURLOPT_RESOLVE, resolve.get());
    }
}

void CurlWebClient::Session::setLimits() {
    set(CURLOPT_CONNECTTIMEOUT_MS, long{options.connectLimit.count()});
    set(CURLOPT_TIMEOUT_MS, long{options.totalLimit.count()});
    set(CURLOPT_LOW_SPEED_LIMIT, options.slowestRate);
    set(CURLOPT_LOW_SPEED_TIME, long{options.patience.count()});
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, options.redirectLimit);
    // A resolver that hangs is left behind instead of being waited for.
    set(CURLOPT_QUICK_EXIT, 1L);
}

void CurlWebClient::Session::setSecurity() {
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    if (!options.caCertificate.empty()) {
        set(CURLOPT_CAINFO, options.caCertificate.c_str());
    }
}

std::string CurlWebClient::Session::libraryComplaint(CURLcode code) const {
    std::string text = errorText[0] != '\0' ? &errorText[0] : lib::easy_strerror(code);
    if (text.size() > 1 && std::islower(static_cast<unsigned char>(text[1])) != 0) { // no abbreviation
        text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return text;
}

/// What is wrong with the way the reply came; empty when it is whole, as far as the library can tell.
std::string CurlWebClient::Session::transportComplaint(CURLcode code, const Reply& reply) const {
    if (reply.isTooLarge) {
        return "larger than " + std::to_string(options.sizeLimit) + " bytes";
    }
    const long status = get<long>(CURLINFO_RESPONSE_CODE);
    if (code == CURLE_HTTP_RETURNED_ERROR || (code == CURLE_OK && status != 200)) {
        return "the server answered with status " + std::to_string(status);
    }
    // A document of the announced length is whole, however the connection ended.
    const bool isComplete = status == 200 && reply.announcedLength && *reply.announcedLength == reply.body.size();
    return code == CURLE_OK || isComplete ? std::string() : libraryComplaint(code);
}

/// Without a length, without chunks and without streams nothing tells the end of a document from a lost connection.
std::string CurlWebClient::Session::lengthComplaint(const Reply& reply) const {
    if (reply.isLengthContradictory) {
        return "its announced lengths contradict each other";
    }
    if (reply.isChunked) {
        return {};
    }
    if (!reply.announcedLength) {
        const bool hasStreams = get<long>(CURLINFO_HTTP_VERSION) >= CURL_HTTP_VERSION_2_0;
        return hasStreams ? "" : "its length is not announced";
    }
    if (*reply.announcedLength != reply.body.size()) {
        return *reply.announcedLength > reply.body.size() ? "shorter than announced" : "longer than announced";
    }
    return {};
}

Result<Bytes> CurlWebClient::Session::fetch(const std::string& url) {
    if (!handle) {
        return Failure{"the network library could not be started"};
    }
    Reply reply;
    reply.sizeLimit = options.sizeLimit;
    errorText[0] = '\0';
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_WRITEDATA, &reply);
    set(CURLOPT_HEADERDATA, &reply);
    const CURLcode code = [this] {
        const trace::Span span("fetch");
        return lib::easy_perform(handle.get());
    }();
    isHostLost =
        code == CURLE_COULDNT_RESOLVE_HOST || code == CURLE_COULDNT_CONNECT || code == CURLE_OPERATION_TIMEDOUT;
    std::string reason = transportComplaint(code, reply);
    if (reason.empty()) {
        reason = lengthComplaint(reply);
    }
    if (!reason.empty()) {
        return Failure{reason};
    }
    if (reply.encoding.empty() || reply.encoding == "identity") {
        return std::move(reply.body);
    }
    return reply.encoding == "gzip" ? gunzip(reply.body, options.sizeLimit) : Failure{"in an unknown compression"};
}

CurlWebClient::CurlWebClient(CurlOptions options) : session_(std::make_unique<Session>(std::move(options))) {}

CurlWebClient::~CurlWebClient() = default;

std::optional<Bytes> CurlWebClient::dataWithContentsOfUrl(const std::string& url) {
    if (!isValidHttpsUrl(url)) {
        lastFailure_ = "not a valid https address";
        return std::nullopt;
    }
    if (cannotExist(authorityOf(url))) {
        lastFailure_ = "the host does not exist";
        return std::nullopt;
    }
    const std::string host(authorityOf(url));
    if (isHeldOff(host)) {
        lastFailure_ = "the host could not be reached a moment ago";
        return std::nullopt;
    }
    auto document = session_->fetch(url);
    if (session_->isHostLost) {
        heldOffUntil_[host] = std::chrono::steady_clock::now() + session_->options.holdOff;
    }
    lastFailure_ = !document ? document.reason() : document->empty() ? "the document is empty" : "";
    return lastFailure_.empty() ? std::optional(std::move(document).value()) : std::nullopt;
}

bool CurlWebClient::isHeldOff(const std::string& host) {
    const auto now = std::chrono::steady_clock::now();
    std::erase_if(heldOffUntil_, [&](const auto& entry) { return entry.second <= now; });
    return heldOffUntil_.contains(host);
}

bool isValidHttpsUrl(std::string_view url) {
    if (url.size() > longestUrl || !url.starts_with(scheme)) {
        return false;
    }
    const std::string_view authority = authorityOf(url);
    const std::string_view rest = url.substr(scheme.size() + authority.size());
    const auto isFineIn = [](std::string_view part, bool inAuthority) {
        return std::all_of(part.begin(), part.end(), [=](char c) { return isLegal(c, inAuthority); });
    };
    return !authority.empty() && authority.front() != ':' && isFineIn(authority, true) && isFineIn(rest, false) &&
           everyPercentIsAnEscape(url);
}

} // namespace quillomat
