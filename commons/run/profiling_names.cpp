#include "commons/run/profiling_names.h"

#include <nlohmann/json.hpp>

namespace brask {

// Neither quite in alphabetical order nor quite in one style of letters: readers of profile.log know the
// texts as they are.
NLOHMANN_JSON_SERIALIZE_ENUM(
    ProfilingOperationType,
    {
        {ProfilingOperationType::DisablePhpHandlers, "disable_php_handlers"},
        {ProfilingOperationType::EnablePhpHandlers, "enable_php_handlers"},
        {ProfilingOperationType::ListArchive, "list_archive"},
        {ProfilingOperationType::Restore, "restore"},
        {ProfilingOperationType::RestoreAdditionalDomains, "restore.additional_domains"},
        {ProfilingOperationType::RestoreCustomer, "restore.customer"},
        {ProfilingOperationType::RestoreCustomers, "restore.customers"},
        {ProfilingOperationType::RestoreDatabase, "restore.database"},
        {ProfilingOperationType::RestoreDatabases, "restore.databases"},
        {ProfilingOperationType::RestoreDatabaseUser, "restore.database_user"},
        {ProfilingOperationType::RestoreDatabaseUsers, "restore.database_users"},
        {ProfilingOperationType::RestoreDatabaseUsersPrivileges, "restore.database_users.privileges"},
        {ProfilingOperationType::RestoreDnsSettings, "restore.dns_settings"},
        {ProfilingOperationType::RestoreDnsZone, "restore.dns_zone"},
        {ProfilingOperationType::RestoreDomain, "restore.domain"},
        {ProfilingOperationType::RestoreDomainAlias, "restore.domain_alias"},
        {ProfilingOperationType::RestoreDomainAliases, "restore.domain_aliases"},
        {ProfilingOperationType::RestoreEmailAccount, "restore.email_account"},
        {ProfilingOperationType::RestoreEmailAccounts, "restore.email_accounts"},
        {ProfilingOperationType::RestoreEmailMessages, "restore.email.messages"},
        {ProfilingOperationType::RestoreEventHandlers, "restore.event_handlers"},
        {ProfilingOperationType::RestoreExtension, "restore.extension"},
        {ProfilingOperationType::RestoreExtensionPackage, "restore.extension_package"},
        {ProfilingOperationType::RestoreExtensions, "restore.extensions"},
        {ProfilingOperationType::RestoreExtensionsPackages, "restore.extensions_packages"},
        {ProfilingOperationType::RestoreFail2BanConfiguration, "restore.fail2Ban_configuration"},
        {ProfilingOperationType::RestoreFtpAccount, "restore.ftp_account"},
        {ProfilingOperationType::RestoreFtpAccounts, "restore.ftp_accounts"},
        {ProfilingOperationType::RestoreHostingPlan, "restore.hosting_plan"},
        {ProfilingOperationType::RestoreHostingPlans, "restore.hosting_plans"},
        {ProfilingOperationType::RestoreMail, "restore.mail"},
        {ProfilingOperationType::RestoreMailSettings, "restore.mail_settings"},
        {ProfilingOperationType::RestoreMailingList, "restore.mailing_list"},
        {ProfilingOperationType::RestoreMailingLists, "restore.mailing_lists"},
        {ProfilingOperationType::RestoreNotifications, "restore.notifications"},
        {ProfilingOperationType::RestorePanelInitSettings, "restore.panel_init_settings"},
        {ProfilingOperationType::RestorePanelLicenses, "restore.panel_licenses"},
        {ProfilingOperationType::RestoreProtectedDirectory, "restore.protected_directory"},
        {ProfilingOperationType::RestoreProtectedDirectories, "restore.protected_directories"},
        {ProfilingOperationType::RestoreReseller, "restore.reseller"},
        {ProfilingOperationType::RestoreResellers, "restore.resellers"},
        {ProfilingOperationType::RestoreResellerPlan, "restore.reseller_plan"},
        {ProfilingOperationType::RestoreResellerPlans, "restore.reseller_plans"},
        {ProfilingOperationType::RestoreRestrictedDomains, "restore.restricted_domains"},
        {ProfilingOperationType::RestoreServer, "restore.server"},
        {ProfilingOperationType::RestoreSpamassassinSettings, "restore.spamassassin_settings"},
        {ProfilingOperationType::RestoreSslCertificate, "restore.ssl_certificate"},
        {ProfilingOperationType::RestoreSslCertificates, "restore.ssl_certificates"},
        {ProfilingOperationType::RestoreSubdomains, "restore.subdomains"},
        {ProfilingOperationType::RestoreSubscription, "restore.subscription"},
        {ProfilingOperationType::RestoreSubscriptions, "restore.subscriptions"},
        {ProfilingOperationType::RestoreUserAccount, "restore.user_account"},
        {ProfilingOperationType::RestoreUserAccounts, "restore.user_accounts"},
        {ProfilingOperationType::RestoreUserRoles, "restore.user_roles"},
        {ProfilingOperationType::RestoreAdminAliases, "restore.admin_aliases"},
        {ProfilingOperationType::RestoreWebHosting, "restore.web_hosting"},
        {ProfilingOperationType::RestoreWpbSettings, "restore.wpb_settings"},
        {ProfilingOperationType::RestoreRunCommand, "restore.run_command"},
        {ProfilingOperationType::UnpackArchive, "unpack_archive"},
    })

NLOHMANN_JSON_SERIALIZE_ENUM(ProfilingAttribute,
                             {
                                 {ProfilingAttribute::ApplicationName, "application.name"},
                                 {ProfilingAttribute::ArchivePath, "archive.path"},
                                 {ProfilingAttribute::ArchiveName, "archive.name"},
                                 {ProfilingAttribute::ArchiveSize, "archive.size"},
                                 {ProfilingAttribute::ProcessCommandLine, "process.command_line"},
                                 {ProfilingAttribute::DirectoryPath, "directory.path"},
                                 {ProfilingAttribute::DbName, "db.name"},
                                 {ProfilingAttribute::DbSystem, "db.system"},
                                 {ProfilingAttribute::DomainName, "domain.name"},
                                 {ProfilingAttribute::ExtensionName, "extension.name"},
                                 {ProfilingAttribute::ProcessRuntimeName, "process.runtime.name"},
                                 {ProfilingAttribute::ServicePlanName, "service_plan.name"},
                                 {ProfilingAttribute::SslCertificateName, "ssl_certificate.name"},
                                 {ProfilingAttribute::UserEmail, "user.email"},
                                 {ProfilingAttribute::UserLogin, "user.login"},
                                 {ProfilingAttribute::UserName, "user.name"},
                             })

NLOHMANN_JSON_SERIALIZE_ENUM(ProfilingMetricType,
                             {
                                 {ProfilingMetricType::SpeedDownload, "backup.speed.download"},
                                 {ProfilingMetricType::SpeedPack, "backup.speed.pack"},
                                 {ProfilingMetricType::SpeedUnpack, "backup.speed.unpack"},
                                 {ProfilingMetricType::SpeedUpload, "backup.speed.upload"},
                             })

std::string profilingText(ProfilingOperationType operation) {
    return nlohmann::json(operation).get<std::string>();
}

std::string profilingText(ProfilingAttribute attribute) {
    return nlohmann::json(attribute).get<std::string>();
}

std::string profilingText(ProfilingMetricType metric) {
    return nlohmann::json(metric).get<std::string>();
}

} // namespace brask
