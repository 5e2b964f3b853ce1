#pragma once

// The names in profile.log: what a record can be about, and the text for it in the file; and the names of a
// run's objects before people, the titles in the execution log. Each list below is the one place for its
// names: enumeration and texts are both made from it. A row's place is its number, which the component's
// other tools use too, so new rows go to the end.
//
// The texts are neither quite in alphabetical order nor quite in one style of letters: readers of profile.log
// know them as they are.

#include <cstdint>
#include <string>

#define BRASK_PROFILING_OPERATIONS(ROW)                                                                      \
    ROW(DisablePhpHandlers, "disable_php_handlers")                                                          \
    ROW(EnablePhpHandlers, "enable_php_handlers")                                                            \
    ROW(ListArchive, "list_archive")                                                                         \
    ROW(Restore, "restore")                                                                                  \
    ROW(RestoreAdditionalDomains, "restore.additional_domains")                                              \
    ROW(RestoreCustomer, "restore.customer")                                                                 \
    ROW(RestoreCustomers, "restore.customers")                                                               \
    ROW(RestoreDatabase, "restore.database")                                                                 \
    ROW(RestoreDatabases, "restore.databases")                                                               \
    ROW(RestoreDatabaseUser, "restore.database_user")                                                        \
    ROW(RestoreDatabaseUsers, "restore.database_users")                                                      \
    ROW(RestoreDatabaseUsersPrivileges, "restore.database_users.privileges")                                 \
    ROW(RestoreDnsSettings, "restore.dns_settings")                                                          \
    ROW(RestoreDnsZone, "restore.dns_zone")                                                                  \
    ROW(RestoreDomain, "restore.domain")                                                                     \
    ROW(RestoreDomainAlias, "restore.domain_alias")                                                          \
    ROW(RestoreDomainAliases, "restore.domain_aliases")                                                      \
    ROW(RestoreEmailAccount, "restore.email_account")                                                        \
    ROW(RestoreEmailAccounts, "restore.email_accounts")                                                      \
    ROW(RestoreEmailMessages, "restore.email.messages")                                                      \
    ROW(RestoreEventHandlers, "restore.event_handlers")                                                      \
    ROW(RestoreExtension, "restore.extension")                                                               \
    ROW(RestoreExtensionPackage, "restore.extension_package")                                                \
    ROW(RestoreExtensions, "restore.extensions")                                                             \
    ROW(RestoreExtensionsPackages, "restore.extensions_packages")                                            \
    ROW(RestoreFail2BanConfiguration, "restore.fail2Ban_configuration")                                      \
    ROW(RestoreFtpAccount, "restore.ftp_account")                                                            \
    ROW(RestoreFtpAccounts, "restore.ftp_accounts")                                                          \
    ROW(RestoreHostingPlan, "restore.hosting_plan")                                                          \
    ROW(RestoreHostingPlans, "restore.hosting_plans")                                                        \
    ROW(RestoreMail, "restore.mail")                                                                         \
    ROW(RestoreMailSettings, "restore.mail_settings")                                                        \
    ROW(RestoreMailingList, "restore.mailing_list")                                                          \
    ROW(RestoreMailingLists, "restore.mailing_lists")                                                        \
    ROW(RestoreNotifications, "restore.notifications")                                                       \
    ROW(RestorePanelInitSettings, "restore.panel_init_settings")                                             \
    ROW(RestorePanelLicenses, "restore.panel_licenses")                                                      \
    ROW(RestoreProtectedDirectory, "restore.protected_directory")                                            \
    ROW(RestoreProtectedDirectories, "restore.protected_directories")                                        \
    ROW(RestoreReseller, "restore.reseller")                                                                 \
    ROW(RestoreResellers, "restore.resellers")                                                               \
    ROW(RestoreResellerPlan, "restore.reseller_plan")                                                        \
    ROW(RestoreResellerPlans, "restore.reseller_plans")                                                      \
    ROW(RestoreRestrictedDomains, "restore.restricted_domains")                                              \
    ROW(RestoreServer, "restore.server")                                                                     \
    ROW(RestoreSpamassassinSettings, "restore.spamassassin_settings")                                        \
    ROW(RestoreSslCertificate, "restore.ssl_certificate")                                                    \
    ROW(RestoreSslCertificates, "restore.ssl_certificates")                                                  \
    ROW(RestoreSubdomains, "restore.subdomains")                                                             \
    ROW(RestoreSubscription, "restore.subscription")                                                         \
    ROW(RestoreSubscriptions, "restore.subscriptions")                                                       \
    ROW(RestoreUserAccount, "restore.user_account")                                                          \
    ROW(RestoreUserAccounts, "restore.user_accounts")                                                        \
    ROW(RestoreUserRoles, "restore.user_roles")                                                              \
    ROW(RestoreAdminAliases, "restore.admin_aliases")                                                        \
    ROW(RestoreWebHosting, "restore.web_hosting")                                                            \
    ROW(RestoreWpbSettings, "restore.wpb_settings")                                                          \
    ROW(RestoreRunCommand, "restore.run_command")                                                            \
    ROW(UnpackArchive, "unpack_archive")

#define BRASK_PROFILING_ATTRIBUTES(ROW)                                                                      \
    ROW(ApplicationName, "application.name")                                                                 \
    ROW(ArchivePath, "archive.path")                                                                         \
    ROW(ArchiveName, "archive.name")                                                                         \
    ROW(ArchiveSize, "archive.size")                                                                         \
    ROW(ProcessCommandLine, "process.command_line")                                                          \
    ROW(DirectoryPath, "directory.path")                                                                     \
    ROW(DbName, "db.name")                                                                                   \
    ROW(DbSystem, "db.system")                                                                               \
    ROW(DomainName, "domain.name")                                                                           \
    ROW(ExtensionName, "extension.name")                                                                     \
    ROW(ProcessRuntimeName, "process.runtime.name")                                                          \
    ROW(ServicePlanName, "service_plan.name")                                                                \
    ROW(SslCertificateName, "ssl_certificate.name")                                                          \
    ROW(UserEmail, "user.email")                                                                             \
    ROW(UserLogin, "user.login")                                                                             \
    ROW(UserName, "user.name")

#define BRASK_PROFILING_METRICS(ROW)                                                                         \
    ROW(SpeedDownload, "backup.speed.download")                                                              \
    ROW(SpeedPack, "backup.speed.pack")                                                                      \
    ROW(SpeedUnpack, "backup.speed.unpack")                                                                  \
    ROW(SpeedUpload, "backup.speed.upload")

#define BRASK_PROFILING_VALUE(name, text) name,

namespace brask {

/// What is profiled.
enum class ProfilingOperationType : std::int32_t { BRASK_PROFILING_OPERATIONS(BRASK_PROFILING_VALUE) };

/// What a record says about it.
enum class ProfilingAttribute : std::int32_t { BRASK_PROFILING_ATTRIBUTES(BRASK_PROFILING_VALUE) };

/// Figures of speed.
enum class ProfilingMetricType : std::int32_t { BRASK_PROFILING_METRICS(BRASK_PROFILING_VALUE) };

#undef BRASK_PROFILING_VALUE

/// The text of a value in a record. A value outside the enumeration reads as its first one.
std::string profilingText(ProfilingOperationType operation);
std::string profilingText(ProfilingAttribute attribute);
std::string profilingText(ProfilingMetricType metric);

/// The display name of an object's id, 1 to 27; "Unspecified" for any other id.
std::string objectDisplayName(int id);

/// The display name of an object's type, such as "Database user". A type without one is given back unchanged.
std::string objectTypeDisplayName(const std::string& type);

} // namespace brask
