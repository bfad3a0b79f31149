; A 64-bit installer with Japanese names; the icon is an .ico file, the install location is quoted and ends in a
; backslash.
Target amd64-unicode
!include "common.nsh"
Name "星図しらべ"
OutFile "starmap-setup.exe"
InstallDir "$PROGRAMFILES64\架空ほしあかり工房\星図しらべ"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\{7A1D3C44-9E0B-4E57-8F26-55C0D1B2E601}"

Section
  SetShellVarContext all
  SetRegView 64
  SetOutPath "$INSTDIR"
  File "/oname=星図.exe" "starmap.exe"
  File "/oname=星図.ico" "starmap.ico"
  SetOutPath "$INSTDIR\資料"
  File "/oname=北の空.txt" "northsky.txt"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninst.exe"
  CreateShortCut "$SMPROGRAMS\星図しらべ.lnk" "$INSTDIR\星図.exe" "" "$INSTDIR\星図.ico" 0
  WriteRegStr HKLM "Software\架空ほしあかり工房\星図しらべ" "場所" "$INSTDIR"
  WriteRegStr HKLM "${KEY}" "DisplayName" "星図しらべ"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "12.0"
  WriteRegStr HKLM "${KEY}" "Publisher" "架空ほしあかり工房"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\星図.ico"
  WriteRegStr HKLM "${KEY}" "InstallLocation" '"$INSTDIR\"'
  WriteRegStr HKLM "${KEY}" "InstallSource" "$EXEDIR"
  WriteRegStr HKLM "${KEY}" "UninstallString" "$INSTDIR\uninst.exe"
  WriteRegStr HKLM "${KEY}" "Comments" "夜空の地図"
  WriteRegDWORD HKLM "${KEY}" "Language" 1041
  !insertmacro WriteInstallDate HKLM "${KEY}"
  !insertmacro WriteEstimatedSize HKLM "${KEY}"
SectionEnd

Section "Uninstall"
  SetRegView 64
  RMDir /r "$INSTDIR"
  DeleteRegKey HKLM "${KEY}"
SectionEnd
