#!/usr/bin/env python3
"""Puts store packages into a prefix as the store would: their folders, and the keys of the user's repository.

usage: storepackages.py DRIVE_C OUT.reg

Wine has no store, so what one leaves is written by hand: an application with a resource package beside it and data of
the user's, and the framework that it needs. The keys go to OUT.reg, for the registry tool of the prefix.
"""
import os
import sys

import icons

PUBLISHER = "CN=Lutrine Letters, O=Lutrine Letters, C=XX"
ID = "k7m2q9t4w0xyz"
APPS = r"C:\Program Files\WindowsApps"
REPOSITORY = (r"HKEY_CURRENT_USER\Software\Classes\Local Settings\Software\Microsoft\Windows\CurrentVersion\AppModel"
              r"\Repository")
INSTALLED = (1710504000 + 11644473600) * 10**7  # 2024-03-15 12:00 UTC, as a FILETIME

APPLICATION = """<?xml version="1.0" encoding="utf-8"?>
<Package xmlns="http://schemas.microsoft.com/appx/manifest/foundation/windows10"
         xmlns:uap="http://schemas.microsoft.com/appx/manifest/uap/windows10">
  <Identity Name="Lutrine.Sketchbook" Publisher="{publisher}" Version="2.1.0.0" ProcessorArchitecture="x64" />
  <!-- The pictures come in several scales: the names below are those without a scale. -->
  <Dependencies>
    <TargetDeviceFamily Name="Windows.Desktop" MinVersion="10.0.17763.0" MaxVersionTested="10.0.19041.0" />
    <PackageDependency Name="Lutrine.Paper" MinVersion="1.4.0.0" Publisher="{publisher}" />
  </Dependencies>
  <Applications>
    <Application Id="App" Executable="sketchbook.exe" EntryPoint="Windows.FullTrustApplication">
      <uap:VisualElements DisplayName="Lutrine Sketchbook" BackgroundColor="#2F6F4F"
          Square150x150Logo="Assets\\Logo.png" Square44x44Logo="Assets\\Small.png" />
    </Application>
  </Applications>
</Package>
"""
FRAMEWORK = """<?xml version="1.0" encoding="utf-8"?>
<Package xmlns="http://schemas.microsoft.com/appx/manifest/foundation/windows10">
  <Identity Name="Lutrine.Paper" Publisher="{publisher}" Version="1.4.2.0" ProcessorArchitecture="x64" />
  <Properties><Framework>true</Framework></Properties>
</Package>
"""


def version(text):
    major, minor, build, revision = (int(part) for part in text.split("."))
    return major << 48 | minor << 32 | build << 16 | revision


def qword(number):
    return "hex(b):" + ",".join(f"{byte:02x}" for byte in number.to_bytes(8, "little"))


def text(value):
    return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'


def keys(full, family, name, framework):
    package = [f"[{REPOSITORY}\\Packages\\{full}]", f'"DisplayName"={text(name)}', f'"PackageID"={text(full)}',
               f'"PackageRootFolder"={text(APPS + chr(92) + full)}', f'"OSMinVersion"={qword(version("10.0.17763.0"))}',
               f'"OSMaxVersionTested"={qword(version("10.0.19041.0"))}']
    if framework:
        package.append('"Framework"=dword:00000001')
    return package + ["", f"[{REPOSITORY}\\Families\\{family}\\{full}]", f'"InstallTime"={qword(INSTALLED)}', ""]


def write(drive, path, content):
    target = os.path.join(drive, *path[3:].split("\\"))
    os.makedirs(os.path.dirname(target), exist_ok=True)
    with open(target, "wb") as file:
        file.write(content)


def main():
    drive, out = sys.argv[1:]
    sketchbook = f"Lutrine.Sketchbook_2.1.0.0_x64__{ID}"
    paper = f"Lutrine.Paper_1.4.2.0_x64__{ID}"
    folder = f"{APPS}\\{sketchbook}"
    write(drive, folder + r"\AppxManifest.xml", APPLICATION.format(publisher=PUBLISHER).encode())
    write(drive, folder + r"\Assets\Logo.scale-100.png", icons.image_png(48, 100))
    write(drive, folder + r"\sketchbook.txt", b"A sheet of paper for every otter.\r\n")
    write(drive, f"{APPS}\\Lutrine.Sketchbook_2.1.0.0_neutral_split.language-de_{ID}\\AppxManifest.xml",
          b"<Package><Identity Name=\"Lutrine.Sketchbook\" Version=\"2.1.0.0\" /></Package>\r\n")
    write(drive, f"{APPS}\\{paper}\\AppxManifest.xml", FRAMEWORK.format(publisher=PUBLISHER).encode())
    write(drive, f"C:\\users\\sample\\AppData\\Local\\Packages\\Lutrine.Sketchbook_{ID}\\Settings\\settings.dat",
          b"grid=on\r\n")
    lines = ["Windows Registry Editor Version 5.00", ""]
    lines += keys(sketchbook, f"Lutrine.Sketchbook_{ID}", "Lutrine Sketchbook", False)
    lines += keys(paper, f"Lutrine.Paper_{ID}", "Lutrine Paper", True)
    with open(out, "w", encoding="utf-16", newline="\r\n") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
