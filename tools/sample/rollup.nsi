; An update of the archiver: an entry with a parent, which shows under it, and a hidden component of the same maker.
!include "common.nsh"
Name "Update Rollup 3 for Fennmark Archiver"
OutFile "rollup-setup.exe"
InstallDir "$PROGRAMFILES32\Fennmark Archiver"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\Fennmark Archiver.UR2041"
!define HIDDEN "${UNINSTALL}\Fennmark Preview"

Section
  SetOutPath "$INSTDIR\updates\UR2041"
  File "changes.txt"
  WriteUninstaller "$INSTDIR\updates\UR2041\remove.exe"
  WriteRegStr HKLM "${KEY}" "DisplayName" "Update Rollup 3 for Fennmark Archiver (UR2041)"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "3"
  WriteRegStr HKLM "${KEY}" "Publisher" "Fennmark Tools"
  WriteRegStr HKLM "${KEY}" "ParentKeyName" "Fennmark Archiver"
  WriteRegStr HKLM "${KEY}" "ParentDisplayName" "Fennmark Archiver 4.2"
  WriteRegStr HKLM "${KEY}" "ReleaseType" "Update Rollup"
  WriteRegStr HKLM "${KEY}" "UninstallString" '"$INSTDIR\updates\UR2041\remove.exe"'
  WriteRegStr HKLM "${KEY}" "HelpLink" "https://fennmark.example/ur2041"
  WriteRegDWORD HKLM "${KEY}" "NoModify" 1
  !insertmacro WriteInstallDate HKLM "${KEY}"

  SetOutPath "$INSTDIR\preview"
  File "preview.dll"
  WriteRegStr HKLM "${HIDDEN}" "DisplayName" "Fennmark Preview Component"
  WriteRegStr HKLM "${HIDDEN}" "DisplayVersion" "4.2.1"
  WriteRegStr HKLM "${HIDDEN}" "Publisher" "Fennmark Tools"
  WriteRegStr HKLM "${HIDDEN}" "InstallLocation" "$INSTDIR\preview"
  WriteRegStr HKLM "${HIDDEN}" "UninstallString" '"$INSTDIR\updates\UR2041\remove.exe" /preview'
  WriteRegDWORD HKLM "${HIDDEN}" "SystemComponent" 1
SectionEnd

Section "Uninstall"
  DeleteRegKey HKLM "${KEY}"
  DeleteRegKey HKLM "${HIDDEN}"
SectionEnd
