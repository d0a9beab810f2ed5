<?php
// One user's address books over SQLite, for `php -S`: $BOOKS is the database, which servers.py makes.
// It knows no sync-collection, and wants Digest. Cards of more than $LARGEST bytes are refused.

require_once 'Sabre/autoload.php';

class SizeLimit extends Sabre\DAV\ServerPlugin {
    function initialize(Sabre\DAV\Server $server) {
        $server->subscribeEvent('beforeMethod', function ($method) {
            if ($method == 'PUT' && $_SERVER['CONTENT_LENGTH'] > getenv('LARGEST'))
                throw new Sabre\DAV\Exception\InsufficientStorage('This card is too large');
        });
    }
}

$pdo = new PDO('sqlite:' . getenv('BOOKS'));
$pdo->setAttribute(PDO::ATTR_ERRMODE, PDO::ERRMODE_EXCEPTION);
$principals = new Sabre\DAVACL\PrincipalBackend\PDO($pdo);
$server = new Sabre\DAV\Server([
    new Sabre\DAVACL\PrincipalCollection($principals),
    new Sabre\CardDAV\AddressBookRoot($principals, new Sabre\CardDAV\Backend\PDO($pdo))]);
$server->addPlugin(new Sabre\DAV\Auth\Plugin(new Sabre\DAV\Auth\Backend\PDO($pdo), 'SabreDAV'));
$server->addPlugin(new Sabre\CardDAV\Plugin());
$server->addPlugin(new Sabre\DAVACL\Plugin());
$server->addPlugin(new SizeLimit());
$server->exec();
