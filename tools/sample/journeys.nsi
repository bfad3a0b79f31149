; Arabic names, written from right to left. The uninstall command has blanks in its path and no quotes around it.
!include "common.nsh"
Name "دفتر الرحلات"
OutFile "journeys-setup.exe"
InstallDir "$PROGRAMFILES32\دفتر الرحلات"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\دفتر الرحلات"

Section
  SetOutPath "$INSTDIR"
  File "/oname=رحلات.exe" "journeys.exe"
  WriteUninstaller "$INSTDIR\remove journeys.exe"
  WriteRegStr HKLM "${KEY}" "DisplayName" "دفتر الرحلات 2.0"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "2.0"
  WriteRegStr HKLM "${KEY}" "Publisher" "ورشة نخلة الخيال"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\رحلات.exe"
  WriteRegStr HKLM "${KEY}" "UninstallString" "$INSTDIR\remove journeys.exe /full /log"
  !insertmacro WriteInstallDate HKLM "${KEY}"
  !insertmacro WriteEstimatedSize HKLM "${KEY}"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
  DeleteRegKey HKLM "${KEY}"
SectionEnd
