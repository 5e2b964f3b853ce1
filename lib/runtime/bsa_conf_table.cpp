#include "lib/runtime/bsa_conf_table.h"

// The rows are numbered from 0 in this order, and the numbers are known to callers. The first and the last
// are sentinels.
#define BSA_CONF_TABLE(ROW)                                                                                  \
    ROW("_MIN_POSSIBLE_BSA_CONF_VAR_NAME", "_MIN_POSSIBLE_BSA_CONF_VAR_VALUE")                               \
    ROW("BRASK_MAILNAMES_D", "/var/qmail/mailnames")                                                         \
    ROW("RBLSMTPD", "/usr/sbin/rblsmtpd")                                                                    \
    ROW("CLIENT_PHP_BIN", "/opt/bsa/bin/php-cli")                                                            \
    ROW("LIB_CRYPTO_PATH", "/lib/libcrypto.so")                                                              \
    ROW("LIB_SSL_PATH", "/lib/libssl.so")                                                                    \
    ROW("AWSTATS_DOC_D", "/usr/share/awstats")                                                               \
    ROW("AWSTATS_TOOLS_D", "/usr/share/awstats/tools")                                                       \
    ROW("AWSTATS_BIN_D", "/usr/lib/cgi-bin")                                                                 \
    ROW("AWSTATS_ETC_D", "/etc/awstats")                                                                     \
    ROW("MAILMAN_VAR_D", "/var/lib/mailman")                                                                 \
    ROW("MAILMAN_ROOT_D", "/usr/lib/mailman")                                                                \
    ROW("PGSQL_DATA_D", "/var/lib/postgresql/14/main")                                                       \
    ROW("PGSQL_BIN_D", "/usr/lib/postgresql/14/bin")                                                         \
    ROW("MYSQL_BIN_D", "/usr/bin")                                                                           \
    ROW("MYSQL_VAR_D", "/var/lib/mysql")                                                                     \
    ROW("WEB_STAT", "/usr/bin/webalizer")                                                                    \
    ROW("DUMP_D", "/var/lib/bsa/dumps")                                                                      \
    ROW("DUMP_TMP_D", "/tmp")                                                                                \
    ROW("NAMED_RUN_ROOT_D", "/var/named/run-root")                                                           \
    ROW("HTTPD_BIN", "/usr/sbin/apache2")                                                                    \
    ROW("HTTPD_SERVICE", "apache2")                                                                          \
    ROW("HTTPD_LOG_D", "/var/log/apache2")                                                                   \
    ROW("HTTPD_INCLUDE_D", "/etc/apache2/conf-enabled")                                                      \
    ROW("HTTPD_CONF_D", "/etc/apache2")                                                                      \
    ROW("HTTPD_VHOSTS_D", "/var/www/vhosts")                                                                 \
    ROW("MYSQL_SOCKET", "/var/run/mysqld/mysqld.sock")                                                       \
    ROW("SA_MAX_MAIL_SIZE", "256000")                                                                        \
    ROW("SNI_SUPPORT", "true")                                                                               \
    ROW("PRODUCT_ROOT_D", BRASK_PRODUCT_ROOT)                                                                \
    ROW("_MAX_POSSIBLE_BSA_CONF_VAR_NAME", "_MAX_POSSIBLE_BSA_CONF_VAR_VALUE")

#define BSA_CONF_NAME(name, value) name,
#define BSA_CONF_DEFAULT(name, value) value,

namespace brask {

const char* const bsaConfNames[kBsaConfRows] = {BSA_CONF_TABLE(BSA_CONF_NAME)};
const char* const bsaConfDefaults[kBsaConfRows] = {BSA_CONF_TABLE(BSA_CONF_DEFAULT)};

} // namespace brask
