<#
.SYNOPSIS
Gathers what an installation of the camera module looks like, as JSON. Decides nothing.

.DESCRIPTION
Writes the facts to a file. With tarn-host.exe beside this script it then prints what holds, what does not and what to do,
and ends with its exit code: 0 all holds, 1 something does not, 2 no answer. Run it elevated, after a camera application
has shown a picture: otherwise nobody has loaded the module, and services cannot be looked into. Changes nothing.

.PARAMETER HardwareId
Start of the camera's instance ids, such as USB\VID_1234&PID_5678. Without it the cameras are found by the module's classes
in their interfaces, so that one that lacks them is not seen.

.EXAMPLE
powershell -ExecutionPolicy Bypass -File check-install.ps1 -HardwareId "USB\VID_1234&PID_5678"
#>
[CmdletBinding()]
param(
    [string]$HardwareId = '',
    [string]$Output = 'tarn-install.json'
)
Set-StrictMode -Version 2
$ErrorActionPreference = 'Stop'

$ModuleFile = 'tarn_dmft.dll'
$ModuleClasses = @('{7F9DF308-0F2D-432E-8C8E-D36ED8F12C90}', '{01BC2102-6449-429F-8F62-B8D23D1DE6D3}')
$Categories = @('{24E552D7-6523-47F7-A647-D3465BF1F5CA}', '{E5323777-F976-4F5B-9B55-B94699C46E44}',
    '{65E8773D-8F56-11D0-A3B9-00A0C9223196}', '{6994AD05-93EF-11D0-A3CC-00A0C9223196}')
$InterfaceValues = @('CameraDeviceMftClsid', 'CameraDeviceMftCLSIDChain', 'FSSensorGroupId', 'FSSensorGroupName')
$ControlKey = 'SYSTEM\CurrentControlSet\Control'

$Errors = New-Object System.Collections.ArrayList
$Machine = [Microsoft.Win32.RegistryKey]::OpenBaseKey('LocalMachine', 'Registry64')

# Runs one step. A step that fails leaves its fact null and says why: the others are worth having.
function Get-Fact([string]$Name, [scriptblock]$Step) {
    try {
        & $Step
    }
    catch {
        [void]$Errors.Add([ordered]@{ fact = $Name; message = $_.Exception.Message })
        $null
    }
}

# $null when the key or the value is not there. Type names are those of RegistryValueKind.
function Get-RegistryValue($Key, [string]$Name) {
    if ($null -eq $Key -or $Key.GetValueNames() -notcontains $Name) { return $null }
    $data = $Key.GetValue($Name, $null, 'DoNotExpandEnvironmentNames')
    return [ordered]@{ type = [string]$Key.GetValueKind($Name); data = $data }
}

function Get-RegistryData([string]$Path, [string]$Name) {
    $key = $Machine.OpenSubKey($Path)
    if ($null -eq $key) { return $null }
    return $key.GetValue($Name, $null)
}

function Get-SubKeyNames($Key) {
    if ($null -eq $Key) { return @() }
    return @($Key.GetSubKeyNames())
}

# Set for the whole machine, or for the camera service alone.
function Get-TraceSetting {
    $machine = [Environment]::GetEnvironmentVariable('TARN_TRACE', 'Machine')
    if ($machine) { return $machine }
    $lines = @(Get-RegistryData 'SYSTEM\CurrentControlSet\Services\FrameServer' 'Environment')
    foreach ($line in $lines) { if ($line -like 'TARN_TRACE=*') { return $line.Substring(11) } }
    return $null
}

function Get-System {
    $principal = New-Object Security.Principal.WindowsPrincipal([Security.Principal.WindowsIdentity]::GetCurrent())
    $version = 'SOFTWARE\Microsoft\Windows NT\CurrentVersion'
    $platform = 'Microsoft\Windows Media Foundation\Platform'
    return [ordered]@{
        build             = [int](Get-RegistryData $version 'CurrentBuildNumber')
        revision          = [int](Get-RegistryData $version 'UBR')
        architecture      = [string]$env:PROCESSOR_ARCHITECTURE
        elevated          = $principal.IsInRole([Security.Principal.WindowsBuiltInRole]::Administrator)
        frameServerMode   = Get-RegistryData "SOFTWARE\$platform" 'EnableFrameServerMode'
        frameServerMode32 = Get-RegistryData "SOFTWARE\WOW6432Node\$platform" 'EnableFrameServerMode'
        cameraConsent     = Get-RegistryData ('SOFTWARE\Microsoft\Windows\CurrentVersion\CapabilityAccessManager\' +
            'ConsentStore\webcam') 'Value'
        traceVariable     = Get-TraceSetting
    }
}

# Windows keeps a copy of every package's INF as oemN.inf.
function Get-Packages {
    foreach ($file in Get-ChildItem "$env:windir\INF\oem*.inf") {
        $text = [IO.File]::ReadAllText($file.FullName)
        if ($text -notmatch [regex]::Escape($ModuleFile)) { continue }
        $found = [ordered]@{ published = $file.Name; class = $null; date = $null; version = $null; catalog = $null }
        if ($text -match '(?im)^\s*Class\s*=\s*(\w+)') { $found.class = $Matches[1] }
        if ($text -match '(?im)^\s*CatalogFile\s*=\s*(\S+)') { $found.catalog = $Matches[1] }
        if ($text -match '(?im)^\s*DriverVer\s*=\s*([\d/]+)\s*,\s*([\d.]+)') {
            $found.date = $Matches[1]
            $found.version = $Matches[2]
        }
        $found
    }
}

# A class's key, below the class root or below a device's software key.
function Get-Class([string]$Path, [string]$ClassId) {
    $key = $Machine.OpenSubKey("$Path\$ClassId")
    if ($null -eq $key) { return }
    $server = $key.OpenSubKey('InprocServer32')
    [ordered]@{
        clsid          = $ClassId
        description    = $key.GetValue('', $null)
        server         = Get-RegistryValue $server ''
        threadingModel = if ($null -eq $server) { $null } else { $server.GetValue('ThreadingModel', $null) }
    }
}

function Get-Classes([string]$Path) {
    foreach ($id in $ModuleClasses) { Get-Class $Path $id }
}

# Every interface of the camera categories, with the device that it belongs to.
function Get-Interfaces {
    foreach ($category in $Categories) {
        $categoryKey = $Machine.OpenSubKey("$ControlKey\DeviceClasses\$category")
        foreach ($name in Get-SubKeyNames $categoryKey) {
            $deviceKey = $categoryKey.OpenSubKey($name)
            $instance = [string]$deviceKey.GetValue('DeviceInstance', '')
            foreach ($reference in Get-SubKeyNames $deviceKey | Where-Object { $_.StartsWith('#') }) {
                $parameters = $deviceKey.OpenSubKey("$reference\Device Parameters")
                $control = $deviceKey.OpenSubKey("$reference\Control")
                $values = [ordered]@{}
                foreach ($value in $InterfaceValues) { $values[$value] = Get-RegistryValue $parameters $value }
                [ordered]@{
                    instanceId = $instance
                    category   = $category
                    reference  = $reference.Substring(1)
                    enabled    = ($null -ne $control -and $control.GetValue('Linked', 0) -eq 1)
                    values     = $values
                }
            }
        }
    }
}

function Test-OurInterface($Interface) {
    if ($HardwareId -and $Interface.instanceId.StartsWith($HardwareId, 'OrdinalIgnoreCase')) { return $true }
    $text = foreach ($name in 'CameraDeviceMftClsid', 'CameraDeviceMftCLSIDChain') {
        if ($null -ne $Interface.values[$name]) { $Interface.values[$name].data }
    }
    return @($text | Where-Object { $ModuleClasses -contains $_ }).Count -gt 0
}

function Get-DeviceProperty([string]$InstanceId, [string]$Name) {
    $property = Get-PnpDeviceProperty -InstanceId $InstanceId -KeyName $Name -ErrorAction SilentlyContinue
    if ($null -eq $property -or $property.Type -eq 'Empty') { return $null }
    return $property.Data
}

function Get-Devices {
    $interfaces = @(Get-Interfaces)
    $ids = @($interfaces | Where-Object { Test-OurInterface $_ } | ForEach-Object { $_.instanceId })
    if ($HardwareId) {
        $ids += @(Get-PnpDevice -ErrorAction SilentlyContinue | ForEach-Object { $_.InstanceId } |
                Where-Object { $_.StartsWith("$HardwareId&MI_", 'OrdinalIgnoreCase') })
    }
    foreach ($id in $ids | Sort-Object -Unique) {
        $enum = $Machine.OpenSubKey("SYSTEM\CurrentControlSet\Enum\$id\Device Parameters")
        $driver = [string](Get-DeviceProperty $id 'DEVPKEY_Device_Driver')
        [ordered]@{
            instanceId  = $id
            present     = [bool](Get-DeviceProperty $id 'DEVPKEY_Device_IsPresent')
            problem     = [int](Get-DeviceProperty $id 'DEVPKEY_Device_ProblemCode')
            class       = Get-DeviceProperty $id 'DEVPKEY_Device_Class'
            inf         = Get-DeviceProperty $id 'DEVPKEY_Device_DriverInfPath'
            extensions  = @(Get-DeviceProperty $id 'DEVPKEY_Device_ExtendedConfigurationIds' | Where-Object { $_ })
            service     = Get-DeviceProperty $id 'DEVPKEY_Device_Service'
            containerId = [string](Get-DeviceProperty $id 'DEVPKEY_Device_ContainerId')
            hardware    = [ordered]@{
                SensorCameraMode      = Get-RegistryValue $enum 'SensorCameraMode'
                SkipCameraEnumeration = Get-RegistryValue $enum 'SkipCameraEnumeration'
            }
            interfaces  = @($interfaces | Where-Object { $_.instanceId -eq $id })
            classes     = @(if ($driver) { Get-Classes "$ControlKey\Class\$driver\Classes\CLSID" })
        }
    }
}

# 0 when the file is no executable.
function Get-MachineType([string]$Path) {
    $stream = [IO.File]::Open($Path, 'Open', 'Read', 'ReadWrite,Delete')
    try {
        $reader = New-Object IO.BinaryReader($stream)
        if ($stream.Length -lt 64) { return 0 }
        $stream.Position = 60
        $header = $reader.ReadUInt32()
        if ($header + 6 -gt $stream.Length) { return 0 }
        $stream.Position = $header + 4
        return [int]$reader.ReadUInt16()
    }
    finally { $stream.Dispose() }
}

function Get-File([string]$Path) {
    $file = [ordered]@{ path = $Path; exists = (Test-Path -LiteralPath $Path -PathType Leaf) }
    if (-not $file.exists) { return $file }
    $signature = Get-AuthenticodeSignature -LiteralPath $Path
    $version = [Diagnostics.FileVersionInfo]::GetVersionInfo($Path)
    $file.machine = Get-MachineType $Path
    $file.version = '{0}.{1}.{2}.{3}' -f $version.FileMajorPart, $version.FileMinorPart, $version.FileBuildPart,
        $version.FilePrivatePart
    $file.sha256 = (Get-FileHash -LiteralPath $Path -Algorithm SHA256).Hash
    $file.signature = [string]$signature.Status
    $file.signer = if ($null -eq $signature.SignerCertificate) { $null } else { $signature.SignerCertificate.Subject }
    $file.fromWeb = $null -ne (Get-Item -LiteralPath $Path -Stream 'Zone.Identifier' -ErrorAction SilentlyContinue)
    $rules = (Get-Acl -LiteralPath $Path).GetAccessRules($true, $true, [Security.Principal.SecurityIdentifier])
    $file.access = @($rules | ForEach-Object {
            [ordered]@{ sid = $_.IdentityReference.Value; allow = ([string]$_.AccessControlType -eq 'Allow')
                rights = [int]$_.FileSystemRights }
        })
    return $file
}

# The files that classes name, and those in the driver store.
function Get-Files($Facts) {
    $classes = @($Facts.classes) + @($Facts.devices | ForEach-Object { $_.classes })
    $named = @($classes | Where-Object { $_.server } |
            ForEach-Object { [Environment]::ExpandEnvironmentVariables($_.server.data).Trim('"') })
    $stored = @(Get-ChildItem "$env:windir\System32\DriverStore\FileRepository\tarn*.inf_amd64_*\$ModuleFile" `
            -ErrorAction SilentlyContinue | ForEach-Object { $_.FullName })
    foreach ($path in $named + $stored | Sort-Object -Unique) { Get-File $path }
}

function Get-Services {
    foreach ($name in 'FrameServer', 'FrameServerMonitor') {
        $service = Get-CimInstance Win32_Service -Filter "Name='$name'"
        if ($null -ne $service) {
            [ordered]@{ name = $name; state = $service.State; startMode = $service.StartMode
                processId = [int]$service.ProcessId; account = $service.StartName }
        }
    }
}

# Processes of other users can be looked into by an administrator only.
function Get-Loaded {
    foreach ($process in Get-Process) {
        try { $modules = @($process.Modules | Where-Object { $_.ModuleName -eq $ModuleFile }) } catch { continue }
        foreach ($module in $modules) {
            [ordered]@{ processId = $process.Id; process = $process.ProcessName; path = $module.FileName }
        }
    }
}

# Crashes of the last weeks in which the module is named ("Application Error", event 1000).
function Get-Crashes {
    $filter = @{ LogName = 'Application'; ProviderName = 'Application Error'; Id = 1000 }
    foreach ($record in Get-WinEvent -FilterHashtable $filter -MaxEvents 300 -ErrorAction SilentlyContinue) {
        $fields = @($record.Properties | ForEach-Object { [string]$_.Value })
        if ($fields -contains $ModuleFile) {
            [ordered]@{ time = $record.TimeCreated.ToUniversalTime().ToString('s') + 'Z'; process = $fields[0]
                module = $fields[3]; code = $fields[6]; offset = $fields[7] }
        }
    }
}

if (-not [Environment]::Is64BitProcess) {
    Write-Error 'Start this from the 64-bit PowerShell.' -ErrorAction Continue
    exit 2
}
$facts = [ordered]@{ format = 1; time = [DateTime]::UtcNow.ToString('s') + 'Z'; hardwareId = $HardwareId }
$facts.system = Get-Fact 'system' { Get-System }
$facts.packages = @(Get-Fact 'packages' { Get-Packages } | Where-Object { $null -ne $_ })
$facts.devices = @(Get-Fact 'devices' { Get-Devices } | Where-Object { $null -ne $_ })
$facts.classes = @(Get-Fact 'classes' { Get-Classes 'SOFTWARE\Classes\CLSID' } | Where-Object { $null -ne $_ })
$facts.classes32 = @(Get-Fact 'classes32' { Get-Classes 'SOFTWARE\Classes\WOW6432Node\CLSID' } |
        Where-Object { $null -ne $_ })
$facts.files = @(Get-Fact 'files' { Get-Files $facts } | Where-Object { $null -ne $_ })
$facts.services = @(Get-Fact 'services' { Get-Services } | Where-Object { $null -ne $_ })
$facts.loaded = @(Get-Fact 'loaded' { Get-Loaded } | Where-Object { $null -ne $_ })
$facts.crashes = @(Get-Fact 'crashes' { Get-Crashes } | Where-Object { $null -ne $_ })
$facts.errors = @($Errors)

$path = $ExecutionContext.SessionState.Path.GetUnresolvedProviderPathFromPSPath($Output)
[IO.File]::WriteAllText($path, ($facts | ConvertTo-Json -Depth 10), (New-Object Text.UTF8Encoding($false)))
Write-Output "Facts: $path"

$judge = Join-Path $PSScriptRoot 'tarn-host.exe'
if (Test-Path -LiteralPath $judge) {
    & $judge check-install --facts $path
    exit $LASTEXITCODE
}
Write-Output "No tarn-host.exe beside this script: run 'tarn-host check-install --facts FILE' where there is one."
exit 2
