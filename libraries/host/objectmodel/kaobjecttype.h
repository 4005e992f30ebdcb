#pragma once

#include <QtGlobal>

// Object kind codes. The numbers are a contract with the host application
// and with the saved files: never renumber.
enum KAObjectType : qint32 {
    KAObjectTypeNone = 0,
    KAObjectTypeAnalysis = 1,
    KAObjectTypeSignal = 2,
    KAObjectTypeWell = 3,
    KAObjectTypeDataset = 4,
    KAObjectTypeVariable = 5,              // content of a dataset
    KAObjectTypeFolder = 260,
    KAObjectTypePeakDetect = 264,
    KAObjectTypeChromatogram = 265,        // offered an extra tree-widget action
    KAObjectTypeIdentifications = 277,
    KAObjectTypeIdentificationGroup = 281,
    KAObjectTypeIdentification = 277,      // an identification reports the branch kind
    KAObjectTypeDeconvMS = 293,
    KAObjectTypeBrowserItem = 512,         // browser-made
    KAObjectTypeAnalysisFolder = 514,
    KAObjectTypeNumericalArraysFolder = 516,
    KAObjectTypeBrowserGroup = 517,        // browser-made
    KAObjectTypeUserFolder = 519,
    KAObjectTypeGlobalIndexation = 528,
    KAObjectTypeIdentificationsFolder = 530,
    KAObjectTypeCompound = 600,
    KAObjectTypeCompoundList = 601,
    KAObjectTypeCompoundBranch = 602,     // browser-made root of the compound lists
    KAObjectTypeProject = 768,
    KAObjectTypeRefreshAllAnalyses = 769,
    KAObjectTypeFake = 2456,
    KAObjectTypeSearch = 2489,
    KAObjectTypeSearchFolder = 2490,
    KAObjectTypeExternalFolders = 2522,
    KAObjectTypeExternalFile = 2523,
    KAObjectTypeActionProject = 2538,
    KAObjectTypeActionChromatogram = 2539,
    KAObjectTypeUnknownSwitch = 2540,
    KAObjectTypeEditMenu = 2541,
    KAObjectTypeEditRename = 2542,
    KAObjectTypeEditDelete = 2543,
    KAObjectTypeEditMove = 2544,
    KAObjectTypeFile = 2554,
    KAObjectTypeWinFile = 2555,
    KAObjectTypeWinFolder = 2556,
    KAObjectTypeWinComputer = 2557,
    KAObjectTypeAliasFolder = 2558,
    FsProjectContent = 2570,
    FsAliasFolders = 2571,
    FsDrives = 2572,
    FsUserFolders = 2573,
    FsFiles = 2574,
};

// Payload kinds that the browser makes and frees with its trees; every other
// payload belongs to the project database.
inline bool kaIsBrowserOwnedType(qint32 type)
{
    return type == 260 || type == 512 || type == 514 || type == 516 || type == 517 || type == 519;
}
