#pragma once

// The names in profile.log: what a record can be about, and the texts that stand for it in the file.

#include <cstdint>
#include <string>

namespace brask {

/// What is profiled. The numbers are fixed: the component's other tools use them too.
enum class ProfilingOperationType : std::int32_t {
    DisablePhpHandlers = 0,
    EnablePhpHandlers,
    ListArchive,
    Restore,
    RestoreAdditionalDomains,
    RestoreCustomer,
    RestoreCustomers,
    RestoreDatabase,
    RestoreDatabases,
    RestoreDatabaseUser,
    RestoreDatabaseUsers,
    RestoreDatabaseUsersPrivileges,
    RestoreDnsSettings,
    RestoreDnsZone,
    RestoreDomain,
    RestoreDomainAlias,
    RestoreDomainAliases,
    RestoreEmailAccount,
    RestoreEmailAccounts,
    RestoreEmailMessages,
    RestoreEventHandlers,
    RestoreExtension,
    RestoreExtensionPackage,
    RestoreExtensions,
    RestoreExtensionsPackages,
    RestoreFail2BanConfiguration,
    RestoreFtpAccount,
    RestoreFtpAccounts,
    RestoreHostingPlan,
    RestoreHostingPlans,
    RestoreMail,
    RestoreMailSettings,
    RestoreMailingList,
    RestoreMailingLists,
    RestoreNotifications,
    RestorePanelInitSettings,
    RestorePanelLicenses,
    RestoreProtectedDirectory,
    RestoreProtectedDirectories,
    RestoreReseller,
    RestoreResellers,
    RestoreResellerPlan,
    RestoreResellerPlans,
    RestoreRestrictedDomains,
    RestoreServer,
    RestoreSpamassassinSettings,
    RestoreSslCertificate,
    RestoreSslCertificates,
    RestoreSubdomains,
    RestoreSubscription,
    RestoreSubscriptions,
    RestoreUserAccount,
    RestoreUserAccounts,
    RestoreUserRoles,
    RestoreAdminAliases,
    RestoreWebHosting,
    RestoreWpbSettings,
    RestoreRunCommand,
    UnpackArchive,
};

/// What a record says about it.
enum class ProfilingAttribute : std::int32_t {
    ApplicationName = 0,
    ArchivePath,
    ArchiveName,
    ArchiveSize,
    ProcessCommandLine,
    DirectoryPath,
    DbName,
    DbSystem,
    DomainName,
    ExtensionName,
    ProcessRuntimeName,
    ServicePlanName,
    SslCertificateName,
    UserEmail,
    UserLogin,
    UserName,
};

/// Figures of speed.
enum class ProfilingMetricType : std::int32_t {
    SpeedDownload = 0,
    SpeedPack,
    SpeedUnpack,
    SpeedUpload,
};

/// The text of a value in a record. A value outside the enumeration reads as its first one.
std::string profilingText(ProfilingOperationType operation);
std::string profilingText(ProfilingAttribute attribute);
std::string profilingText(ProfilingMetricType metric);

} // namespace brask
