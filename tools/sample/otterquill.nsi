; A name beyond the basic plane, and the values that another family of installers writes about its folder.
!include "common.nsh"
Name "Otterquill 🦦"
OutFile "otterquill-setup.exe"
InstallDir "$PROGRAMFILES32\Otterquill 🦦"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\Otterquill 🦦_is1"

Section
  SetShellVarContext all
  SetOutPath "$INSTDIR"
  File "otterquill.exe"
  File "/oname=otters 🦦🦦.txt" "otters.txt"
  WriteUninstaller "$INSTDIR\unins000.exe"
  CreateShortCut "$SMPROGRAMS\Otterquill 🦦.lnk" "$INSTDIR\otterquill.exe"
  WriteRegStr HKLM "${KEY}" "Inno Setup: App Path" "$INSTDIR"
  WriteRegStr HKLM "${KEY}" "Inno Setup: Icon Group" "(Default)"
  WriteRegStr HKLM "${KEY}" "Inno Setup: User" "sample"
  WriteRegStr HKLM "${KEY}" "DisplayName" "Otterquill 🦦 version 1.0.3"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "1.0.3"
  WriteRegStr HKLM "${KEY}" "Publisher" "Lutrine Letters"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\otterquill.exe"
  WriteRegStr HKLM "${KEY}" "UninstallString" '"$INSTDIR\unins000.exe"'
  WriteRegStr HKLM "${KEY}" "QuietUninstallString" '"$INSTDIR\unins000.exe" /SILENT'
  WriteRegDWORD HKLM "${KEY}" "NoModify" 1
  !insertmacro WriteInstallDate HKLM "${KEY}"
  !insertmacro WriteEstimatedSize HKLM "${KEY}"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
  DeleteRegKey HKLM "${KEY}"
SectionEnd
