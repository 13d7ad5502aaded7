#include "net/tls.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cerrno>
#include <ctime>
#include <map>
#include <vector>

#include "net/pcsb_socket.h"

namespace {

typedef std::unique_ptr<SSL_SESSION, void (*)(SSL_SESSION*)> session;

// Of the process; made for the first connection.
struct tls_t {
    std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context{nullptr, SSL_CTX_free};
    std::map<std::string, std::vector<session>> sessions;  // by origin, the newest last
};
tls_t tls;

std::string day_of(const ASN1_TIME* time) {
    tm parts{};
    char text[16] = "an unknown day";
    if (ASN1_TIME_to_tm(time, &parts) == 1) std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
    return text;
}

// One of the names that a certificate is for.
std::string first_name(X509* certificate) {
    const std::unique_ptr<GENERAL_NAMES, void (*)(GENERAL_NAMES*)> names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)),
        GENERAL_NAMES_free);
    for (int n = 0; names && n < sk_GENERAL_NAME_num(names.get()); ++n) {
        const GENERAL_NAME* name = sk_GENERAL_NAME_value(names.get(), n);
        if (name->type == GEN_DNS)
            return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(name->d.dNSName)),
                    static_cast<std::size_t>(ASN1_STRING_length(name->d.dNSName))};
    }
    return "";
}

// Why a certificate on the way from the server's own (depth 0) to one that the system trusts does not hold.
std::string what_is_wrong(const std::string& host, X509_STORE_CTX* chain) {
    X509* certificate = X509_STORE_CTX_get_current_cert(chain);
    const std::string whose = X509_STORE_CTX_get_error_depth(chain) == 0 ? "the certificate of " + host
                                                                         : "a certificate that vouches for " + host;
    const int error = X509_STORE_CTX_get_error(chain);
    switch (error) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return whose + " ended on " + day_of(X509_get0_notAfter(certificate));
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return whose + " begins on " + day_of(X509_get0_notBefore(certificate)) +
                   " (is this computer's clock right?)";
        case X509_V_ERR_HOSTNAME_MISMATCH:
        case X509_V_ERR_IP_ADDRESS_MISMATCH: {
            const std::string other = first_name(certificate);
            return whose + " is for another host" + (other.empty() ? "" : ", " + other);
        }
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
            return whose + " is signed by nobody but itself";
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
            return "the certificate of " + host + " is signed by nobody whom this system trusts";
        default:
            return whose + " does not hold: " + X509_verify_cert_error_string(error);
    }
}

int check_certificate(int holds, X509_STORE_CTX* chain) {
    if (holds) return holds;
    auto* ssl = static_cast<SSL*>(X509_STORE_CTX_get_ex_data(chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
    auto* owner = static_cast<tls_class*>(SSL_get_app_data(ssl));
    owner->explain(what_is_wrong(owner->server().host, chain));
    return 0;
}

int keep_session(SSL* ssl, SSL_SESSION* given) {
    constexpr std::size_t most = 8;  // of one server; four connections use up four
    auto& kept = tls.sessions[static_cast<tls_class*>(SSL_get_app_data(ssl))->server().origin()];
    if (kept.size() == most) kept.erase(kept.begin());
    kept.emplace_back(given, SSL_SESSION_free);
    return 1;  // it is ours now
}

SSL_CTX* context() {
    if (tls.context) return tls.context.get();
    tls.context.reset(SSL_CTX_new(TLS_client_method()));
    SSL_CTX* made = tls.context.get();
    if (!made) return nullptr;
    SSL_CTX_set_min_proto_version(made, TLS1_2_VERSION);
    SSL_CTX_set_default_verify_paths(made);
    SSL_CTX_set_verify(made, SSL_VERIFY_PEER, check_certificate);
    // A request may be taken in parts, and what is left of it may have moved.
    SSL_CTX_set_mode(made, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_CTX_set_session_cache_mode(made, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_sess_set_new_cb(made, keep_session);
    return made;
}

// A ticket of TLS 1.3 tells whoever sees it twice that both connections are one user's, so it goes with its use.
void use_session(SSL* ssl, const std::string& origin) {
    auto& kept = tls.sessions[origin];
    if (kept.empty()) return;
    SSL_set_session(ssl, kept.back().get());
    if (SSL_SESSION_get_protocol_version(kept.back().get()) >= TLS1_3_VERSION) kept.pop_back();
}

}  // namespace

tls_class::tls_class(int fd, const server_address& server)
    : peer(server), ssl(context() ? SSL_new(context()) : nullptr, SSL_free) {
    static const unsigned char protocols[] = "\x08http/1.1";
    if (!ssl || SSL_set_fd(ssl.get(), fd) != 1) {
        now = state::over;
        problem = "TLS could not be set up";
        return;
    }
    SSL_set_app_data(ssl.get(), this);
    SSL_set_alpn_protos(ssl.get(), protocols, sizeof protocols - 1);
    X509_VERIFY_PARAM* wanted = SSL_get0_param(ssl.get());
    X509_VERIFY_PARAM_set_hostflags(wanted, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    // An address is checked as an address, and is no name to send along.
    if (X509_VERIFY_PARAM_set1_ip_asc(wanted, peer.host.c_str()) != 1) {
        X509_VERIFY_PARAM_set1_host(wanted, peer.host.c_str(), 0);
        SSL_set_tlsext_host_name(ssl.get(), peer.host.c_str());
    }
    use_session(ssl.get(), peer.origin());
}

tls_class::~tls_class() {
    // One word of farewell, as far as the socket takes it. A session of a connection that ends without it is refused.
    if (ssl && now == state::open) SSL_shutdown(ssl.get());
    ERR_clear_error();
}

void tls_class::explain(const std::string& words) {
    if (problem.empty()) problem = words;
}

// What an unhappy call means: 0 to try again once the socket is ready, -1 for the end.
long tls_class::after(int result) {
    const int system_error = errno;
    const int error = SSL_get_error(ssl.get(), result);
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE) {
        writing = error == SSL_ERROR_WANT_WRITE;
        return 0;
    }
    const bool shaking = now == state::shaking;
    now = state::over;
    const unsigned long code = ERR_peek_error();
    ERR_clear_error();
    if (error == SSL_ERROR_ZERO_RETURN || ERR_GET_REASON(code) == SSL_R_UNEXPECTED_EOF_WHILE_READING) {
        if (shaking) explain("closed the connection instead of agreeing on TLS");
    } else if (error == SSL_ERROR_SYSCALL && system_error != 0) {
        explain(system_words(system_error));
    } else {
        const char* reason = ERR_reason_error_string(code);
        explain(std::string("TLS failed: ") + (reason ? reason : "no reason told"));
    }
    return -1;
}

tls_class::state tls_class::shake_hands() {
    if (now != state::shaking) return now;
    ERR_clear_error();
    errno = 0;
    const int result = SSL_connect(ssl.get());
    if (result == 1)
        now = state::open;
    else
        after(result);
    return now;
}

long tls_class::read(char* bytes, long size) {
    if (now != state::open) return -1;
    ERR_clear_error();
    errno = 0;
    const int result = SSL_read(ssl.get(), bytes, static_cast<int>(size));
    return result > 0 ? result : after(result);
}

long tls_class::write(const char* bytes, long size) {
    if (now != state::open) return -1;
    ERR_clear_error();
    errno = 0;
    const int result = SSL_write(ssl.get(), bytes, static_cast<int>(size));
    return result > 0 ? result : after(result);
}
